// Constants and records of the system's lower half: access rights, attributes, critical sections, module reasons.
#pragma once

#include <guiddef.h>
#include <windef.h>

#define GENERIC_READ 0x80000000
#define GENERIC_WRITE 0x40000000
#define EVENT_ALL_ACCESS 0x1F0003

#define FILE_SHARE_READ 0x00000001
#define FILE_SHARE_WRITE 0x00000002
#define FILE_SHARE_DELETE 0x00000004
#define FILE_LIST_DIRECTORY 0x0001
#define FILE_NOTIFY_CHANGE_FILE_NAME 0x00000001
#define FILE_NOTIFY_CHANGE_DIR_NAME 0x00000002
#define FILE_ACTION_ADDED 0x00000001
#define FILE_ACTION_REMOVED 0x00000002
#define FILE_ACTION_RENAMED_OLD_NAME 0x00000004
#define FILE_ACTION_RENAMED_NEW_NAME 0x00000005

#define FILE_ATTRIBUTE_READONLY 0x00000001
#define FILE_ATTRIBUTE_DIRECTORY 0x00000010
#define FILE_ATTRIBUTE_ARCHIVE 0x00000020

#define EVENTLOG_ERROR_TYPE 0x0001
#define EVENTLOG_WARNING_TYPE 0x0002
#define EVENTLOG_INFORMATION_TYPE 0x0004
#define EVENTLOG_SEQUENTIAL_READ 0x0001
#define EVENTLOG_BACKWARDS_READ 0x0008

#define PROCESS_VM_READ 0x0010
#define PROCESS_QUERY_INFORMATION 0x0400
#define PROCESS_ALL_ACCESS 0x001FFFFF
#define TOKEN_ALL_ACCESS 0x000F01FF

#define SID_REVISION 1

#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1

// A recursive, priority-inheriting mutex of this system lies in it.
typedef struct _RTL_CRITICAL_SECTION
{
    alignas(void*) unsigned char Storage[40];
} RTL_CRITICAL_SECTION;

typedef struct _TP_WORK TP_WORK, *PTP_WORK;
typedef struct _TP_CALLBACK_INSTANCE TP_CALLBACK_INSTANCE, *PTP_CALLBACK_INSTANCE;
typedef struct _TP_CALLBACK_ENVIRON_V3 TP_CALLBACK_ENVIRON, *PTP_CALLBACK_ENVIRON;
typedef VOID(NTAPI* PTP_WORK_CALLBACK)(PTP_CALLBACK_INSTANCE Instance, PVOID Context, PTP_WORK Work);

// One changed name; its length counts bytes, and no zero ends it.
typedef struct _FILE_NOTIFY_INFORMATION
{
    DWORD NextEntryOffset;
    DWORD Action;
    DWORD FileNameLength;
    WCHAR FileName[1];
} FILE_NOTIFY_INFORMATION;

// The head of an event log record. Source and computer name follow it, then, at their offsets, user, texts and data,
// and last the length again.
typedef struct _EVENTLOGRECORD
{
    DWORD Length; // bytes, with all that follows
    DWORD Reserved;
    DWORD RecordNumber;
    DWORD TimeGenerated; // seconds since 1970
    DWORD TimeWritten;
    DWORD EventID;
    WORD EventType;
    WORD NumStrings;
    WORD EventCategory;
    WORD ReservedFlags;
    DWORD ClosingRecordNumber;
    DWORD StringOffset;
    DWORD UserSidLength;
    DWORD UserSidOffset;
    DWORD DataLength;
    DWORD DataOffset;
} EVENTLOGRECORD;

// Who a user is. Users of this system are S-1-22-1-<uid>.
typedef PVOID PSID;
typedef struct _SID_IDENTIFIER_AUTHORITY
{
    BYTE Value[6];
} SID_IDENTIFIER_AUTHORITY;
typedef struct _SID
{
    BYTE Revision;
    BYTE SubAuthorityCount;
    SID_IDENTIFIER_AUTHORITY IdentifierAuthority;
    DWORD SubAuthority[1]; // as many as counted
} SID;
typedef enum _SID_NAME_USE
{
    SidTypeUser = 1
} SID_NAME_USE,
    *PSID_NAME_USE;

typedef struct _SID_AND_ATTRIBUTES
{
    PSID Sid;
    DWORD Attributes;
} SID_AND_ATTRIBUTES;
typedef struct _TOKEN_USER
{
    SID_AND_ATTRIBUTES User;
} TOKEN_USER, *PTOKEN_USER;
typedef enum _TOKEN_INFORMATION_CLASS
{
    TokenUser = 1
} TOKEN_INFORMATION_CLASS;
