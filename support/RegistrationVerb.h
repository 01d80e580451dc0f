#pragma once

#include <initializer_list>

#include "PlatformTypes.h"

/// The verbs that make the executable write or remove its registration instead of serving.
enum class RegistrationVerb
{
    None,
    UnregServer,
    RegServer,
    UnregServerPerUser,
    RegServerPerUser,
};

/// What stands behind the program's path in a whole command line, as GetCommandLineW gives it.
/// Shape: a path that begins with a quote ends behind the next quote, any other at a blank or tab.
WStringView SkipProgramPath(WStringView commandLine);

/// The first of the verbs in `among` that `arguments` holds.
///
/// Shape:  a verb stands behind a "-" or "/", wherever that is, in any case, and ends at a blank, a
///         tab or the end of the text; with anything else behind it, it is no verb.
/// Thread: any.
RegistrationVerb FindRegistrationVerb(WStringView arguments,
                                      std::initializer_list<RegistrationVerb> among);

/// The same among all four verbs.
RegistrationVerb FindRegistrationVerb(WStringView arguments);
