#include "Zam/CollectionView.h"

namespace Zam {

CollectionView::Walk::Cursor::~Cursor() = default;
CollectionView::Source::~Source() = default;

void detail::throwChangedUnderWalk() {
   throw TypeError("a collection without an order has changed under a walk over it");
}

std::string TypeUse::name() const {
   std::string const named = typeName(type);
   switch (kind) {
      case Kind::nothing:
      case Kind::value:
      case Kind::enumeration:
      case Kind::entity:
         break;
      case Kind::map:
         return "map of " + typeName(key) + " to " + named;
      case Kind::set:
         return "set of " + named;
      case Kind::list:
         return "list of " + named;
   }
   return named;
}

}  // namespace Zam
