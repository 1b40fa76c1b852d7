#include "Kiv/CliSupport.h"
#include "Zam/TypeRegistry.h"

#include <iostream>

// A stranger's program: it knows only what is installed. A type made by name here must be the library's own.
int main() {
   Kiv::registerTypes();
   auto const& via = *Zam::TypeRegistry::instance().type("Kiv::CachedVia");
   std::any object = via.construct();
   via.attributeIs(object, "hop", Lumen::IpGenAddr(Lumen::IpAddr::parse("10.0.0.1")));
   via.attributeIs(object, "viaIndex", U16{7});

   auto const& value = std::any_cast<Kiv::CachedVia const&>(object);
   std::cout << value.hop << ' ' << value.viaIndex << ' ' << Kiv::pcode(Routing::Fib::RouteType::connected) << '\n';
   auto const sorter = Kiv::routeSorterFactory(Kiv::RouteSorter::Inputs());
   sorter->handleInitialized();
   std::cout << sorter->sortedRoutes() << (sorter->printRoutes(0xffffU, 1, false) ? " printed\n" : " not printed\n");
   try {
      Lumen::Prefix::parse("10.0.0.0/33");
   } catch (Zam::ParseError const&) {
      std::cout << "ParseError\n";
   } catch (Zam::RangeError const&) {
      std::cout << "RangeError\n";
   }
   return 0;
}
