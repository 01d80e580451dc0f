#include "MailInterface.h"

#include <atomic>

namespace
{

std::atomic<MailSwitchFactory> g_factory{nullptr};

} // namespace

MailSwitchFactory SetMailSwitchFactory(MailSwitchFactory factory) noexcept
{
    return g_factory.exchange(factory);
}

std::unique_ptr<IMailSwitch> MakeMailSwitch() noexcept
{
    const MailSwitchFactory factory = g_factory.load();
    return factory != nullptr ? factory() : nullptr;
}
