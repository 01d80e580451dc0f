#include "PatternTail.h"

#include <new>

#include "BlobCursor.h"

namespace
{

constexpr std::uint32_t kSubject = 1;
constexpr std::uint32_t kMeetingType = 2;
constexpr std::uint32_t kReminderDelta = 4;
constexpr std::uint32_t kReminder = 8;
constexpr std::uint32_t kLocation = 16;
constexpr std::uint32_t kBusyStatus = 32;
constexpr std::uint32_t kAttachment = 64;
constexpr std::uint32_t kSubType = 128;
constexpr std::uint32_t kColor = 256;
constexpr std::uint32_t kBody = 512;

constexpr std::uint32_t kExceptionFixedBytes = 14;

/// Reserved blocks that have nothing to say have a size of 0 or 4. Whatever else stands in the place
/// of a size begins the next record, which is how both writer versions are read alike.
void SkipReserved(CBlobCursor& cursor) noexcept
{
    while (cursor.Has(4))
    {
        const std::uint32_t size = cursor.PeekU32();
        if (size != 0 && size != 4)
        {
            return;
        }
        cursor.Skip(std::uint64_t{size} + 4);
    }
}

TailWarning ReadLists(CBlobCursor& cursor, PatternTail& tail, ExceptionMap& exceptions)
{
    tail.deletedCount = cursor.ReadU32();
    if (!cursor.Has(std::uint64_t{4} * tail.deletedCount))
    {
        return TailWarning::DeletedList;
    }
    for (std::uint32_t i = 0; i < tail.deletedCount; ++i)
    {
        const std::uint32_t date = cursor.ReadU32();
        RecurExceptionInfo deleted;
        deleted.originalStart = date;
        exceptions.insert_or_assign(exceptions.end(), date, std::move(deleted)); // mostly in order
    }
    tail.modifiedCount = cursor.ReadU32();
    cursor.Skip(std::uint64_t{4} * tail.modifiedCount);
    tail.startDate = cursor.ReadU32();
    tail.endDate = cursor.ReadU32();
    cursor.Skip(8); // reader and writer version
    tail.startTimeOffset = cursor.ReadU32();
    tail.endTimeOffset = cursor.ReadU32();
    return cursor.IsPastEnd() ? TailWarning::FixedPart : TailWarning::None;
}

void SkipNarrowText(CBlobCursor& cursor) noexcept
{
    cursor.Skip(2);
    const std::uint16_t length = cursor.ReadU16();
    cursor.Skip(length);
}

/// Walks the fields that the flags select, in the order of the flags.
TailWarning ReadOverrides(CBlobCursor& cursor, RecurExceptionInfo& info)
{
    const std::uint32_t flags = info.overrideFlags;
    if ((flags & kSubject) != 0)
    {
        SkipNarrowText(cursor);
        info.subject.clear();
        if (cursor.IsPastEnd())
        {
            return TailWarning::ExceptionSubject;
        }
    }
    if ((flags & kMeetingType) != 0)
    {
        // A type that the end of the pattern cuts off is no type.
        info.meetingType = cursor.Has(4) ? cursor.PeekU32() : 0;
        info.hasMeetingType = 1;
        cursor.Skip(4);
    }
    for (const std::uint32_t flag : {kReminderDelta, kReminder})
    {
        cursor.Skip((flags & flag) != 0 ? 4 : 0);
    }
    if ((flags & kLocation) != 0)
    {
        SkipNarrowText(cursor); // the rule's location stays
        if (cursor.IsPastEnd())
        {
            return TailWarning::ExceptionLocation;
        }
    }
    for (const std::uint32_t flag : {kBusyStatus, kSubType, kColor})
    {
        cursor.Skip((flags & flag) != 0 ? 4 : 0);
    }
    // The attachment's four bytes are passed over only together with a body, at this place. A
    // record with the first flag alone puts the records behind it out of step; readers of stored
    // data have relied on the outcome.
    cursor.Skip((flags & kBody) != 0 && (flags & kAttachment) != 0 ? 4 : 0);
    return TailWarning::None;
}

/// Sets the text unless there is no room for it in memory.
void TakeText(CBlobCursor& cursor, std::uint16_t units, WString& text)
{
    const CBlobCursor before = cursor;
    try
    {
        text = cursor.ReadText(units);
    }
    catch (const std::bad_alloc&)
    {
        cursor = before;
        cursor.Skip(std::uint64_t{2} * units);
    }
}

bool ReadExtendedText(CBlobCursor& cursor, WString& text)
{
    const std::uint16_t units = cursor.ReadU16();
    if (units == 0)
    {
        return true;
    }
    if (!cursor.Has(std::uint64_t{2} * units))
    {
        return false;
    }
    TakeText(cursor, units, text);
    return true;
}

TailWarning ReadExtended(CBlobCursor& cursor,
                         std::uint32_t startTimeOffset,
                         ExceptionMap& exceptions)
{
    if (!cursor.Has(4))
    {
        return TailWarning::ExtendedStart;
    }
    if (cursor.ReadU32() == 0)
    {
        return TailWarning::None;
    }
    if (!cursor.Has(8))
    {
        return TailWarning::ExtendedDates;
    }
    cursor.Skip(4); // end
    const std::uint32_t originalStart = cursor.ReadU32();
    const auto entry = exceptions.find(originalStart - startTimeOffset);
    if (entry == exceptions.end())
    {
        return TailWarning::ExtendedUnknownDate;
    }
    RecurExceptionInfo& info = entry->second;
    if ((info.overrideFlags & kSubject) != 0 && !ReadExtendedText(cursor, info.subject))
    {
        return TailWarning::ExtendedSubject;
    }
    if ((info.overrideFlags & kLocation) != 0 && !ReadExtendedText(cursor, info.location))
    {
        return TailWarning::ExtendedLocation;
    }
    SkipReserved(cursor);
    return TailWarning::None;
}

} // namespace

TailResult CPatternTailReader::Read(std::uint64_t tailStart,
                                    PatternTail& tail,
                                    ExceptionMap& exceptions) const
{
    CBlobCursor cursor(m_blob, tailStart);
    const auto end = [&cursor](TailWarning warning, bool isComplete = false) {
        return TailResult{warning, cursor.Position(), isComplete};
    };
    if (const TailWarning warning = ReadLists(cursor, tail, exceptions);
        warning != TailWarning::None)
    {
        return end(warning);
    }
    for (auto& [date, info] : exceptions)
    {
        info.originalStart += tail.startTimeOffset;
    }
    const std::uint16_t count = cursor.ReadU16();
    for (std::uint32_t i = 0; i < count; ++i)
    {
        if (!cursor.Has(kExceptionFixedBytes))
        {
            return end(TailWarning::ExceptionRecord);
        }
        RecurExceptionInfo info;
        info.state = kExceptionModified;
        info.subject = m_subject;
        info.location = m_location;
        info.start = cursor.ReadU32();
        info.end = cursor.ReadU32();
        info.originalStart = cursor.ReadU32();
        info.overrideFlags = cursor.ReadU16();
        if (const TailWarning warning = ReadOverrides(cursor, info); warning != TailWarning::None)
        {
            return end(warning);
        }
        const auto entry = exceptions.find(info.originalStart - tail.startTimeOffset);
        if (entry != exceptions.end()) // a modified date that is not among the deleted is dropped
        {
            entry->second = std::move(info);
        }
    }
    if (count == 0)
    {
        return end(TailWarning::None);
    }
    if (!cursor.Has(4))
    {
        return end(TailWarning::FirstReservedSize);
    }
    SkipReserved(cursor);
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const TailWarning warning = ReadExtended(cursor, tail.startTimeOffset, exceptions);
        if (warning != TailWarning::None)
        {
            return end(warning);
        }
    }
    return end(TailWarning::None, true);
}
