// The one process-wide lock of the module: it serialises instance creation and, with it, the
// first-use construction of tables that every instance shares.
#pragma once

#include <mutex>

namespace ziv {

std::mutex& instanceLock();

}  // namespace ziv
