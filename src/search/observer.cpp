#include "search/observer.h"

namespace zorva {

SearchObserver& silentObserver() {
  static SearchObserver silent;
  return silent;
}

}  // namespace zorva
