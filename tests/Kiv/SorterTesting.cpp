#include "tests/Kiv/SorterTesting.h"

namespace Kiv::Testing {

template class Box<V4>;
template class Box<V6>;

}  // namespace Kiv::Testing
