#include "Kiv/routedisplay/CachedFec.h"

namespace Kiv {

CachedFec::~CachedFec() = default;

}  // namespace Kiv
