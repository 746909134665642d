#include "plugin/instance_lock.h"

namespace ziv {

std::mutex& instanceLock() {
  static std::mutex lock;
  return lock;
}

}  // namespace ziv
