#pragma once

inline constexpr const char* kVersion = "dtrecur 1.0\n";

inline constexpr const char* kHelp =
    R"(dtrecur: expands stored recurrence patterns the way the server does.

usage:
  dtrecur show --pattern HEX [--zone HEX] [--from TIME --to TIME] [...]
      Explains one series in words, lists its instances and draws a calendar.
  dtrecur batch [--trace]
      Expands the series on standard input, one a line.
  dtrecur COMMAND --help
  dtrecur --version

exit codes: 0 done, 1 a file or stream failed, 2 wrong arguments.
)";

inline constexpr const char* kShowHelp =
    R"(dtrecur show: explains one series in words, lists its instances and draws a calendar.

usage: dtrecur show --pattern PATTERN [options]

  --pattern PATTERN   the recurrence pattern: hexadecimal digits, @FILE for the raw
                      bytes of a file, - for either on standard input
  --zone ZONE         the 48-byte time zone, in the same forms; without it local
                      time is UTC
  --from TIME         window start, UTC, YYYY-MM-DD[THH:MM:SS]; default: the day
                      before the start date of the series
  --to TIME           window end, UTC; default: a day behind the end of the series,
                      but at most a year behind --from
  --first TIME        first time of the series; its year decides whether one zone
                      of before 2020 has daylight time; default: the start date
  --subject TEXT, --location TEXT
                      the texts of the series
  --keep-all          list deleted and moved weekly instances all the same, as the
                      one configured site does
  --trace             print the trace lines of the expansion as well
  --color WHEN        auto (on a terminal, the default), always or never

In the calendar "*" is an instance, ">" one that was moved or changed, "<" the place
that it was moved from, "x" a deleted or cancelled one.
)";

inline constexpr const char* kBatchHelp =
    R"(dtrecur batch: expands the series on standard input, one a line.

usage: dtrecur batch [--trace]

A line of input has nine fields with a tab between them:
  id, pattern (hexadecimal), zone (hexadecimal, may be empty), first time,
  window start, window end, subject, location, keep-all (0 or 1)
Times are YYYY-MM-DDTHH:MM:SS, the window in UTC. Texts are UTF-8 as they stand.

For each line it writes
  id, count
and for each instance, in the order of the server's list,
  id, index from 0, start, end, sub key, subject, location,
  has-meeting-type (0 or 1), meeting type
with times in UTC. In texts a backslash is written \\, tab \t, line feed \n,
carriage return \r, and any other unit below U+0020, U+007F and an unpaired surrogate
\uXXXX. A line that cannot be read gives
  id, "error", reason
and the batch goes on.

  --trace   write the trace lines before the count, each as
              id, "trace", text
)";
