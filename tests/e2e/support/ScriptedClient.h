#pragma once

#include <windows.h>

#include <ocidl.h>

#include <memory>
#include <string>
#include <vector>

#include "ClientFrame.h"
#include "ComOwners.h"
#include "dtOIEx64_i.h"
#include "EventSink.h"

/// A client of the server that does what it is told, one command after another.
///
/// Commands, each answered by one line "done COMMAND 0xRESULT [VALUE]":
///   frame, closeframe         own a frame window, or give it up
///   create                    the object, by ProgID
///   advise NAME [fail]        a sink; with "fail" it answers every event with E_FAIL
///   unadvise NAME
///   initialize MAIL TYPE      the value of TYPE "-" is an empty text
///   list CODE [SECONDS]       a window that begins CODE seconds into 2020 and is a day or SECONDS long;
///                             gives the sequence id
///   waitsignal NAME           waits for the event of this name while messages go on; "1" when it came
///   keepsignal NAME           makes the event of this name and holds it, before somebody else sets it
///   signal NAME               sets the event of this name
///   waitend FILE              waits until every process of this file name has ended; "1" when they did
///   endall FILE               ends them
///   wholetexts                from here on the texts of events are not cut
///   nulllist                  a window without a start
///   profile                   gives the document, or "untouched"
///   empties vtable            all ten methods that do nothing; gives how many answered S_OK
///   empties dispatch          the nine of them that take no record, by name: Wine 8 cannot carry a
///                             record in a VARIANT to another process (E_NOTIMPL)
///   postevent TYPE KEY
///   releaseapp BOOL           0, -1 or 1, as it stands
///   onevent release|releaseapp  what to do inside the next event
///   release                   drops every reference, sinks included
///   errorinfo                 whether the object supports error information
///   die                       ends the process without any of that
/// Each event is printed as "event NAME ID NUMBER TEXT" when it comes; a text of more than 400 letters
/// is cut there, and " of LENGTH" follows.
class CScriptedClient
{
public:
    CScriptedClient();
    CScriptedClient(const CScriptedClient&) = delete;
    CScriptedClient& operator=(const CScriptedClient&) = delete;
    ~CScriptedClient();

    void Run(const std::string& command);

private:
    struct Sink
    {
        std::string name;
        dtclient::CComRef<dtclient::CEventSink> sink;
        DWORD cookie = 0;
    };

    HRESULT RunCommand(const std::vector<std::string>& words, std::string& value);
    HRESULT Create();
    HRESULT Advise(const std::string& name, bool fails);
    HRESULT Unadvise(const std::string& name);
    HRESULT List(unsigned long code, unsigned long seconds, std::string& value);
    HRESULT Profile(std::string& value);
    HRESULT EmptiesByTable(std::string& value);
    HRESULT EmptiesByDispatch(std::string& value);
    HRESULT ErrorInfo();
    void ReleaseAll();
    void OnEvent(const std::string& name, bool fails, const dtclient::ServerEvent& event);

    std::unique_ptr<dtclient::CClientFrame> m_frame;
    dtclient::CComRef<IMapiDtClient> m_server;
    dtclient::CComRef<IConnectionPoint> m_point;
    std::vector<Sink> m_sinks;
    std::string m_onEvent;
    std::size_t m_shown = 400; ///< Letters of a text that are printed.
};
