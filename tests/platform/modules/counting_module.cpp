// A module that writes down its attaches and detaches, and refuses to attach where a file says so.
#include <windows.h>

#include <cstdio>

static int g_iCalls = 0;

static void WriteDown(const char* pWord)
{
    FILE* pFile = nullptr;
    if (fopen_s(&pFile, "C:\\loader.txt", "at") != 0)
        return;
    fputs(pWord, pFile);
    fclose(pFile);
}

extern "C" __attribute__((visibility("default"))) BOOL DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pReserved)
{
    char aPath[MAX_PATH] = {};
    if (pReserved != nullptr || GetModuleFileNameA(hInstance, aPath, sizeof(aPath)) == 0)
        return FALSE;
    WriteDown(dwReason == DLL_PROCESS_ATTACH ? "attach " : "detach ");
    return GetFileAttributesA("C:\\refuse") == INVALID_FILE_ATTRIBUTES;
}

extern "C" __attribute__((visibility("default"))) int CountCalls()
{
    return ++g_iCalls;
}
