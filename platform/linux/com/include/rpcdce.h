// Levels of trust between caller and server.
#pragma once

#include <windef.h>

#define RPC_C_AUTHN_LEVEL_DEFAULT 0
#define RPC_C_AUTHN_LEVEL_CALL 3
#define RPC_C_IMP_LEVEL_IMPERSONATE 3
#define RPC_C_AUTHN_WINNT 10
#define RPC_C_AUTHZ_NONE 0

typedef void* RPC_AUTH_IDENTITY_HANDLE;
