// The management instrumentation's main header.
#pragma once

#include <wbemcli.h>
