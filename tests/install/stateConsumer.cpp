#include "state/Inputs.h"
#include "state/Snapshot.h"
#include "state/StateDir.h"

#include <iostream>

// A stranger's program that keeps a state in the directory that it is told, and reads it again.
int main(int, char** arguments) {
   char const* const text =
       R"({"vrfs": {"default": {"ipv4Routes": [{"prefix": "10.0.0.0/8", "type": "drop", "vias": []}]}}})";
   state::writeStateDir(state::parseSnapshot("text", text), arguments[1]);
   state::Inputs inputs = state::mountStateDir(arguments[1]);
   int routes = 0;
   inputs.routes(0)->walk([&](Vault::Fib::Route const&) { ++routes; });
   std::cout << routes << '\n';
   return 0;
}
