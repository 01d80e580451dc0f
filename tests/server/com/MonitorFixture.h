#pragma once

#include <windows.h>

#include <gtest/gtest.h>
#include <unknwn.h>

#include <functional>
#include <string>
#include <vector>

#include "EventMessages.h"
#include "Monitor.h"
#include "MonitorClient.h"
#include "MonitorHost.h"

/// A client object that writes down what is fired at it, such as "OnListAppointment 111 <xml>".
class CFakeClient final : public IMonitorClient, public IUnknown
{
public:
    IUnknown* MonitorUnknown() noexcept override { return this; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return static_cast<ULONG>(--references); }

    void Fire_OnCalendarUpdated(ULONG type, BSTR text) override
    {
        Note(L"OnCalendarUpdated", type, text);
    }
    void Fire_OnInitialize(LONG result) override
    {
        Note(L"OnInitialize " + std::to_wstring(result));
    }
    void Fire_OnListAppointment(ULONG id, BSTR text) override
    {
        Note(L"OnListAppointment", id, text);
    }
    void Fire_OnListRecurrentInstance(ULONG id, BSTR text) override
    {
        Note(L"OnListRecurrentInstance", id, text);
    }
    void Fire_OnGetAppointment(ULONG id, BSTR text) override
    {
        Note(L"OnGetAppointment", id, text);
    }
    void Fire_OnGetRecentEmails(ULONG id, BSTR text) override
    {
        Note(L"OnGetRecentEmails", id, text);
    }
    void Fire_OnResolveName(BSTR text) override { Note(L"OnResolveName", text); }
    void Fire_OnGetContactDetail(ULONG id, BSTR text) override
    {
        Note(L"OnGetContactDetail", id, text);
    }
    void Fire_OnGetPersonalContact(BSTR text) override { Note(L"OnGetPersonalContact", text); }
    void Fire_OnContactUpdated(ULONG type, BSTR text) override
    {
        Note(L"OnContactUpdated", type, text);
    }
    void Fire_OnSearchForContacts(BSTR text) override { Note(L"OnSearchForContacts", text); }
    void Fire_OnResolveByUri(BSTR text) override { Note(L"OnResolveByUri", text); }
    void Fire_OnResolveByPhoneNumber(BSTR text) override { Note(L"OnResolveByPhoneNumber", text); }
    void Fire_OnTrace(BSTR text) override { Note(L"OnTrace", text); }

    std::vector<std::wstring> fired;
    std::function<void()> onFire;
    LONG references = 1;
    bool isUnknown = true; ///< false: refuses even IUnknown

private:
    void Note(const std::wstring& line);
    void Note(const std::wstring& name, BSTR text) { Note(name + L" " + text); }
    void Note(const std::wstring& name, ULONG number, BSTR text)
    {
        Note(name + L" " + std::to_wstring(number) + L" " + text);
    }
};

/// The process around the monitor, as the tests see it.
class CFakeHost final : public IMonitorHost
{
public:
    DWORD MainThreadId() const noexcept override { return mainThreadId; }
    bool IsRegistrationRun() const noexcept override { return registrationRun; }
    void ReleaseMail() noexcept override { steps.push_back("release"); }
    void EndProcess() noexcept override;

    DWORD mainThreadId = GetCurrentThreadId();
    bool registrationRun = false;
    std::vector<std::string> steps;
    HANDLE processEnded = CreateEventW(nullptr, TRUE, FALSE, nullptr); ///< set by EndProcess
};

/// A monitor of its own for each test, with its window on the test's thread, and events let through.
class MonitorTest : public testing::Test
{
protected:
    MonitorTest();
    ~MonitorTest() override;

    /// A block as the work thread posts it.
    static LPARAM WideBlock(const std::wstring& text);
    static LPARAM NarrowBlock(const std::string& text);
    /// Gives the message to the window procedure at once.
    static LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam);
    /// Takes a WM_QUIT out of this thread's queue, if there is one.
    static bool TakeQuit();

    CFakeHost m_host;
    CClientMonitor* m_monitor = nullptr;
    CFakeClient m_client;
};
