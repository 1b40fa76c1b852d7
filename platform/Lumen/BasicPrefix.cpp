#include "Lumen/BasicPrefix.h"

#include "Lumen/AddrLengthText.h"

namespace Lumen {

template <class Addr>
BasicPrefix<Addr> BasicPrefix<Addr>::parse(std::string_view text) {
   return text == nullText ? BasicPrefix() : parseAddrLength<BasicPrefix>(text);
}

template <class Addr>
std::size_t BasicPrefix<Addr>::formatTo(char* out) const noexcept {
   if (isNullPrefix()) {
      return static_cast<std::size_t>(formatText(out, nullText) - out);
   }
   return formatAddrLength(*this, out);
}

template class BasicPrefix<IpAddr>;
template class BasicPrefix<Ip6Addr>;

}  // namespace Lumen
