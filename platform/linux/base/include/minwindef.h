// The basic types under the name of the smaller header that declares them on the platform.
#pragma once

#include <windef.h>
