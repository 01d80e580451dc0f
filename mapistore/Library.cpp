#include <windows.h>

/// The DLL's entry. Nothing is set up here: the library starts with the first MAPIInitialize.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID);

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID)
{
    return TRUE;
}
