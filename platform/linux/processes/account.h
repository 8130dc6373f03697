// Users of this system: names and security ids of their numbers.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include <sys/types.h>

// False when the user database doesn't know the user.
bool UserName(uid_t iUser, std::wstring& strName);
bool UserNumber(const std::string& strName, uid_t& iUser);
// What stands for the domain.
std::wstring HostName();
// The bytes of S-1-22-1-<uid>.
std::vector<BYTE> SidOf(uid_t iUser);
