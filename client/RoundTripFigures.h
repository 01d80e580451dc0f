#pragma once

#include <string>
#include <vector>

namespace dtclient
{
/// What a row of measurements comes down to.
///
/// Units: microseconds.
struct Spread
{
    double least = 0;
    double median = 0;
    double mean = 0;
    double most = 0;
};

/// Errors: all zero for no measurement.
Spread SpreadOf(std::vector<double> microseconds);

/// What `ping` found out.
struct PingFigures
{
    bool serverWasRunning = false;
    double activationMs = 0;
    unsigned calls = 0;
    Spread roundTrip;
};

std::string PingText(const PingFigures& figures);
std::string PingJson(const PingFigures& figures);
} // namespace dtclient
