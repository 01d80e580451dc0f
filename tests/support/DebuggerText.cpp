#include "DebuggerText.h"

CDebuggerText* CDebuggerText::s_instance = nullptr;

namespace
{

constexpr DWORD kDebugPrint = 0x40010006;

} // namespace

CDebuggerText::CDebuggerText()
{
    s_instance = this;
    m_handler = AddVectoredExceptionHandler(1, SeeException);
}

CDebuggerText::~CDebuggerText()
{
    RemoveVectoredExceptionHandler(m_handler);
    s_instance = nullptr;
}

std::vector<std::string> CDebuggerText::Texts() const
{
    const std::scoped_lock hold(m_textsLock);
    return m_texts;
}

LONG CALLBACK CDebuggerText::SeeException(EXCEPTION_POINTERS* pointers)
{
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    if (record.ExceptionCode == kDebugPrint && record.NumberParameters >= 2)
    {
        const std::scoped_lock hold(s_instance->m_textsLock);
        s_instance->m_texts.emplace_back(
            reinterpret_cast<const char*>(record.ExceptionInformation[1]));
    }
    return EXCEPTION_CONTINUE_SEARCH;
}
