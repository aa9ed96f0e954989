#include "foundation/mutex.h"

kcMutex& kcMutex::global() {
  static kcMutex mutex;
  return mutex;
}
