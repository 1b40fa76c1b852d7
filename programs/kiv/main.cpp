#include "programs/kiv/Program.h"

#include <cstddef>

int main(int argc, char** argv) {
   auto const count = static_cast<std::size_t>(argc);
   return kiv::runProgram(std::span<char const* const>(argv, count).subspan(count == 0 ? 0 : 1));
}
