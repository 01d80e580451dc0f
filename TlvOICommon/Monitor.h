#pragma once

#include <windows.h>

#include <map>
#include <mutex>
#include <vector>

#include "ComRef.h"
#include "MonitorClient.h"
#include "MonitorHost.h"

/// The bridge from the threads that make results to the thread that may fire events, and the book of
/// clients and sequence ids.
///
/// A hidden window receives posted results (EventMessages.h); its procedure fires the event that
/// belongs to each, unless a release is under way, and frees the text.
///
/// Owner:  one per process, made by the first GetInstance after SetHost, ended by
///         DeleteClientMonitorInstance. Client pointers are plain: a client takes itself out.
/// Thread: the window and every event belong to the thread that calls GetInstance first, which has to
///         be the main thread. The operations on clients and sequence ids: any thread.
/// Errors: without a window posted results are lost, and nothing is traced.
class CClientMonitor final
{
public:
    CClientMonitor(const CClientMonitor&) = delete;
    CClientMonitor& operator=(const CClientMonitor&) = delete;

    /// Tells where the monitor stands. Comes before the first GetInstance.
    static void SetHost(IMonitorHost* host) noexcept;
    static IMonitorHost* Host() noexcept;

    /// The monitor, made on first use. Null before SetHost, after DeleteClientMonitorInstance, and
    /// when there is no memory for it.
    static CClientMonitor* GetInstance() noexcept;
    /// Ends the monitor for good: late traces must not bring a second one to life.
    static void DeleteClientMonitorInstance() noexcept;
    /// The hidden window, null when there is none. Safe while the monitor is being deleted.
    static HWND Window() noexcept;

    /// The next sequence id: 111, 112 and so on, one counter for all clients.
    ULONG NextSequence();
    void AddClient(IMonitorClient* client);
    /// Leaves the client's sequence ids mapped: FindClientBySequence no longer answers them.
    void RemoveClient(IMonitorClient* client);
    [[nodiscard]] bool IsClient(const IMonitorClient* client) const;
    /// Binds the id to the client, unless it is not one of the present clients.
    void MapSequence(ULONG sequence, IMonitorClient* client);
    void UnmapSequence(ULONG sequence);
    [[nodiscard]] bool FindClientBySequence(ULONG sequence, IMonitorClient*& client) const;

private:
    /// A client with a reference that keeps it over calls into other processes.
    struct PinnedClient
    {
        IMonitorClient* client;
        CComRef<IUnknown> reference;
    };

    CClientMonitor();
    ~CClientMonitor();

    void CreateEventWindow();
    static LRESULT CALLBACK WndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void HandleWindowMessage(UINT message, WPARAM wParam, LPARAM lParam);

    void HandleEventMessage();
    static void ForceExit();

    void FireInitialize(ULONG sequence, LONG result);
    void FireText(UINT message, ULONG word, const wchar_t* text);
    void FireTrace(const char* text);
    template <typename Fire>
    void FireToOwner(ULONG sequence, bool unmap, Fire fire);
    template <typename Fire>
    void FireToAll(Fire fire);
    [[nodiscard]] std::vector<PinnedClient> PinClients() const;

    HWND m_hWnd = nullptr;
    // Guards the members below it. Recursive, and held over broadcasts: a client that calls back from
    // within an event comes in on the same thread. Taken before the lock of a connection point.
    mutable std::recursive_mutex m_Lock;
    std::vector<IMonitorClient*> m_Clients;
    std::map<ULONG, IMonitorClient*> m_SeqMap;
    ULONG m_nNextSequence = 111;
};
