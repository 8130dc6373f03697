// Tokens: users under whose name something is done.
#pragma once

#include "threads/kernel.h"

#include <sys/types.h>

struct CUserToken : public CKernelObject
{
    explicit CUserToken(uid_t iWho) : iUser(iWho) {}
    const uid_t iUser;
};
