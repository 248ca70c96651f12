// The entry point of the library as a DLL.
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

// Nothing here is kept for each thread, so the starts and ends of threads are of no interest.
extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH)
        DisableThreadLibraryCalls(library);
    return TRUE;
}
