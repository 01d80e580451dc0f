#include "RoundTripFigures.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <numeric>

namespace dtclient
{
Spread SpreadOf(std::vector<double> microseconds)
{
    Spread spread;
    if (microseconds.empty())
    {
        return spread;
    }
    std::sort(microseconds.begin(), microseconds.end());
    const std::size_t middle = microseconds.size() / 2;
    spread.least = microseconds.front();
    spread.most = microseconds.back();
    spread.median = microseconds.size() % 2 != 0
                        ? microseconds[middle]
                        : (microseconds[middle - 1] + microseconds[middle]) / 2;
    spread.mean = std::accumulate(microseconds.begin(), microseconds.end(), 0.0) /
                  static_cast<double>(microseconds.size());
    return spread;
}

std::string PingText(const PingFigures& figures)
{
    std::array<char, 400> buffer{};
    const int length = std::snprintf(
        buffer.data(),
        buffer.size(),
        "activation  %.1f ms (%s)\n"
        "round trip  %.1f us median, %.1f least, %.1f mean, %.1f most, over %u empty calls\n",
        figures.activationMs,
        figures.serverWasRunning ? "the server was running already" : "a fresh server",
        figures.roundTrip.median,
        figures.roundTrip.least,
        figures.roundTrip.mean,
        figures.roundTrip.most,
        figures.calls);
    return std::string(buffer.data(), static_cast<std::size_t>(std::max(length, 0)));
}

std::string PingJson(const PingFigures& figures)
{
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json["serverWasRunning"] = figures.serverWasRunning;
    json["activationMs"] = figures.activationMs;
    json["calls"] = figures.calls;
    json["roundTripUs"]["median"] = figures.roundTrip.median;
    json["roundTripUs"]["least"] = figures.roundTrip.least;
    json["roundTripUs"]["mean"] = figures.roundTrip.mean;
    json["roundTripUs"]["most"] = figures.roundTrip.most;
    return json.dump(2) + "\n";
}
} // namespace dtclient
