/// Defines the interface ids of the platform's own headers, which otherwise only declare them.

#include <initguid.h>
#include <windows.h>

#include "support/stand_in_runtime/abi.h"
