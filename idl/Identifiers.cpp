// The identifiers that the interface description declares, defined once for whoever links this.
#include <windows.h>

#include <ole2.h>
// initguid.h turns the header's DEFINE_GUID lines into definitions; it has to come before it.
#include <initguid.h>

#include "dtOIEx64_i.h"
