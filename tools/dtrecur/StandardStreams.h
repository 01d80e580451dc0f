#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// The standard streams as plain bytes: no line ending is changed on any platform.

/// To be called once at the start.
void UsePlainStreams();

/// Writes and empties the text; false when nobody takes it any more.
bool FlushOutput(std::string& out);

/// Everything until the end of standard input.
std::string ReadAllInput();

bool IsTerminalOutput();

/// Reads standard input line by line, as much at a time as is at hand.
class CLineReader
{
public:
    /// The next line without its ending; a carriage return before it goes with it. The last line
    /// needs none. `beforeWait` is called before more input is asked for, and its false ends the
    /// reading. The line lives until the next call.
    bool Next(std::string_view& line, const std::function<bool()>& beforeWait);

private:
    bool Fill();

    std::string m_buffer;
    std::size_t m_begin = 0;
    std::size_t m_searched = 0; // no line ending before this
    bool m_isAtEnd = false;
};
