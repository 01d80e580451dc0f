#pragma once

#include <cstdint>
#include <string>

/// What a store for a bench is like: a calendar of appointments, every one with the texts, times and
/// attendees that people's have.
struct SampleShape
{
    std::uint32_t messages = 1000;
    std::uint32_t days = 5; ///< working days from kSampleMonday on that they are spread over
    std::uint32_t recurringEvery = 0; ///< each n-th is a weekly series; 0: none
    std::uint32_t attendees = 5;
    std::uint32_t bodyLength = 500; ///< characters of the plain body, and about as many of HTML
    std::uint32_t revised = 0;      ///< how many, from the first on, have another place and subject
    std::uint32_t revision = 0;     ///< which other one
};

/// Identifiers of the document's objects.
constexpr std::uint64_t kSampleStore = 1;
constexpr std::uint64_t kSampleCalendar = 9;
constexpr std::uint64_t kSampleFirstMessage = 100;

/// The store's uid in the document's spelling.
constexpr const char* kSampleUid = "5D1F6A0B93C84E27A1B0C2D3E4F50617";

/// A store document. The first week of the appointments is that of Monday, 2026-11-02; a series has one
/// instance a week.
std::string SampleStoreText(const SampleShape& shape);
