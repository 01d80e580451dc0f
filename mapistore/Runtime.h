#pragma once

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "Config.h"
#include "FaultPlan.h"
#include "Ledger.h"
#include "Notifier.h"

namespace mapistore
{

class CStoreFolder;

/// Something that outlives its last reference for a while, so that a call on it is noticed.
class CShell
{
public:
    virtual ~CShell() = default;
};

/// What the library keeps for the process: settings, ledger, fault plan, the notification thread
/// and the store folder that is in use.
///
/// Thread: any.
class CRuntime
{
public:
    HRESULT Initialize(ULONG version, ULONG flags);
    void Uninitialize();

    /// Between the first MAPIInitialize and the last MAPIUninitialize.
    bool Running() const { return m_running.load(); }
    /// MAPI has to be initialised on each thread that uses it.
    static bool ThreadReady();
    /// Raised by each run, so that an object of an earlier one is recognised.
    std::uint32_t Run() const { return m_run.load(); }

    CLedger& Ledger() { return m_ledger; }
    CFaultPlan& Faults() { return m_faults; }
    CNotifier& Notifier() { return m_notifier; }

    /// The folder of the settings, read when it is first asked for. Throws `CMapiError`
    /// MAPI_E_CORRUPT_STORE for a document that cannot be used and MAPI_E_UNCONFIGURED without a
    /// folder.
    std::shared_ptr<CStoreFolder> StoreFolder();

    /// Takes an object whose last reference went.
    void Keep(std::unique_ptr<CShell> shell);
    /// Frees what was kept so far. A late call on one of these objects is no longer noticed.
    void DropShells() noexcept;

    /// A line for the debugger stream and the ledger.
    void Say(const std::string& text);

    std::string Report() const;

private:
    HRESULT Start();
    void Stop();

    mutable std::mutex m_lock; // guards starting, stopping and the members down to the shells
    std::uint32_t m_users = 0;
    Config m_config;
    std::shared_ptr<CStoreFolder> m_folder;
    std::mutex m_folderLock; // held while the folder is read, so that two logons read it once

    std::mutex m_shellLock; // guards the shells
    std::deque<std::unique_ptr<CShell>> m_shells;

    std::atomic<bool> m_running{false};
    std::atomic<std::uint32_t> m_run{0};
    CLedger m_ledger;
    CFaultPlan m_faults;
    CNotifier m_notifier;
};

CRuntime& Runtime();

} // namespace mapistore
