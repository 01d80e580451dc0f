#include "RemoteClient.h"

#include <chrono>
#include <sstream>

namespace
{
constexpr std::chrono::milliseconds kPatience(kPatienceMs);

std::string RestOf(std::istringstream& stream)
{
    std::string rest;
    std::getline(stream, rest);
    return rest.empty() ? rest : rest.substr(1);
}
} // namespace

CRemoteClient::CRemoteClient()
{
    m_process.Start(BuildPath(L"tests\\e2e_client.exe"), L"", true);
    m_reader = std::thread([this] { ReadAll(); });
}

CRemoteClient::~CRemoteClient()
{
    m_process.CloseInput();
    m_reader.join();
}

void CRemoteClient::ReadAll()
{
    for (std::string line; m_process.ReadLine(line);)
    {
        std::istringstream stream(line);
        std::string kind;
        std::string name;
        stream >> kind >> name;
        const std::scoped_lock hold(m_linesLock);
        if (kind == "event")
        {
            HeardEvent event;
            event.sink = name;
            stream >> event.id >> event.number;
            event.text = RestOf(stream);
            m_events.push_back(event);
        }
        else if (kind == "done")
        {
            CommandAnswer answer;
            answer.came = true;
            stream >> std::hex >> answer.result;
            answer.value = RestOf(stream);
            m_answers.emplace_back(name, answer);
        }
        m_came.notify_all();
    }
    const std::scoped_lock hold(m_linesLock);
    m_ended = true;
    m_came.notify_all();
}

CommandAnswer CRemoteClient::Do(const std::string& command)
{
    if (!m_process.WriteLine(command))
    {
        return {};
    }
    return AnswerOf(command.substr(0, command.find(' ')));
}

CommandAnswer CRemoteClient::AnswerOf(const std::string& name)
{
    CommandAnswer answer;
    std::unique_lock hold(m_linesLock);
    m_came.wait_for(hold, kPatience, [&] {
        for (auto entry = m_answers.begin(); entry != m_answers.end(); ++entry)
        {
            if (entry->first == name)
            {
                answer = entry->second;
                m_answers.erase(entry);
                return true;
            }
        }
        return m_ended;
    });
    return answer;
}

HeardEvent CRemoteClient::WaitForEvent(int id, const std::string& sink)
{
    HeardEvent found;
    std::unique_lock hold(m_linesLock);
    m_came.wait_for(hold, kPatience, [&] {
        while (!m_events.empty())
        {
            const HeardEvent event = m_events.front();
            m_events.pop_front();
            if (event.id == id && (sink == "*" || sink == event.sink))
            {
                found = event;
                return true;
            }
        }
        return m_ended;
    });
    return found;
}

std::vector<HeardEvent> CRemoteClient::Waiting()
{
    const std::scoped_lock hold(m_linesLock);
    return {m_events.begin(), m_events.end()};
}

void CRemoteClient::Kill()
{
    m_process.WriteLine("die");
    m_process.Wait();
}
