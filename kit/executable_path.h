// kit: the path of the running program's own executable, the one platform-dependent
// query of kit location. It only asks; it never opens or follows the file.
//
// Threads: safe from any thread.
#pragma once

#include "text/string.h"

// Bytes of the executable's path as the system reports it (at most 4,095), or an
// empty string when it cannot be found.
stdx::mbstring ExecutablePath();
