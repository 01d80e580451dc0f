#pragma once

#include <vector>

#include "MailInterface.h"

/// What all mail systems have in common: whether the mail client is installed, the status of the
/// last bring-up, and the init types that were asked for.
///
/// Thread: the work thread.
class CMailCtrl : public CMailInterface
{
public:
    /// Looks once whether the mail client is installed; later calls answer the last status.
    /// Errors: BringUpNoLibrary when the install key has no text.
    ULONG Init() override;
    void FreeLib() override {}

    /// Notes an init type. Answers 1 when it was seen before, else 0.
    ULONG RegisterInitType(ULONG initType);

protected:
    CMailCtrl() = default;
    ~CMailCtrl() override = default;

    ULONG m_bInitialized = 0; ///< set by the first Init, never cleared
    /// The last initialize result, and the status that operations test: other than 0 refuses them.
    ULONG m_hrInit = 1;
    WString m_strInstallKey;
    std::vector<ULONG> m_InitTypes; ///< in order of arrival
};
