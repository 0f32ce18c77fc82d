#pragma once

#include <functional>

namespace Ovg {

/// Calls \a inTask with each number from 0 to \a inCount - 1, in any order and on all cores, and returns when
/// all is done. \a inTask doesn't throw. When the system gives fewer threads, fewer have to do; when none,
/// the caller's does.
///
/// \a inProgress, if not empty, gets the number of calls done and \a inCount, on the thread of the caller,
/// every now and then and at the end. When it returns false, no further call is begun, and the result is
/// false.
bool parallelFor(int inCount, const std::function<void(int)>& inTask,
                 const std::function<bool(int, int)>& inProgress = {});

} // namespace Ovg
