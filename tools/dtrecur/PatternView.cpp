#include "PatternView.h"

#include "BlobCursor.h"

namespace
{

RuleForm FormOf(const PatternView& view)
{
    switch (view.frequency)
    {
    case 10:
        if ((view.patternType & 0xFF) == 0)
        {
            return RuleForm::EveryDays;
        }
        return (view.patternType & 0xFF) == 1 && view.firstDateTime == 8640 ? RuleForm::WorkingDays
                                                                            : RuleForm::Unknown;
    case 11:
        return RuleForm::Weekly;
    case 12:
        return view.patternType == 2   ? RuleForm::MonthlyDay
               : view.patternType == 3 ? RuleForm::MonthlyOrdinal
                                       : RuleForm::Unknown;
    case 13:
        return view.patternType == 2   ? RuleForm::YearlyDay
               : view.patternType == 3 ? RuleForm::YearlyOrdinal
                                       : RuleForm::Unknown;
    default:
        return RuleForm::Unknown;
    }
}

/// Size of the pattern-specific field.
std::uint32_t SpecificBytes(RuleForm form)
{
    switch (form)
    {
    case RuleForm::EveryDays:
        return 0;
    case RuleForm::MonthlyOrdinal:
    case RuleForm::YearlyOrdinal:
        return 8;
    default:
        return 4;
    }
}

} // namespace

PatternView::PatternView(std::span<const std::uint8_t> blob,
                         WStringView subject,
                         WStringView location)
    : size(blob.size())
{
    const auto u16 = [blob](std::uint64_t at) { return CBlobCursor(blob, at).ReadU16(); };
    const auto u32 = [blob](std::uint64_t at) { return CBlobCursor(blob, at).ReadU32(); };
    frequency = u16(4) & 0xFFU;
    patternType = u16(6);
    calendarType = u16(8);
    firstDateTime = u32(10);
    period = u32(14);
    specific = u32(22);
    week = u32(26);
    form = FormOf(*this);
    const std::uint32_t specificBytes = SpecificBytes(form);
    const std::uint32_t tailOffset = 34 + specificBytes;
    if (blob.size() < tailOffset)
    {
        form = RuleForm::Unknown;
        return;
    }
    endType = u32(22 + specificBytes);
    occurrenceCount = u32(26 + specificBytes);
    if (form != RuleForm::Unknown)
    {
        tailResult = CPatternTailReader(blob, subject, location).Read(tailOffset, tail, exceptions);
    }
}
