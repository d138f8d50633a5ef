// Internal to fs/: exclusive creation under a name nobody holds yet. The caller's
// `create` makes the object and fails with EEXIST when the name is taken, so there is
// no window between choosing a name and claiming it. Any thread.
#pragma once

#include <functional>

#include "text/string.h"

namespace fsdetail {

// Calls create(stem + six random letters or digits) until it returns something other
// than EEXIST, a bounded number of times. Returns 0 or the errno value of the last
// attempt; `name` receives the last name tried either way.
int CreateUnderUniqueName(const stdx::mbstring& stem,
                          const std::function<int(const char* candidate)>& create,
                          stdx::mbstring& name);

}  // namespace fsdetail
