#include "Lumen/BasicAddrWithMask.h"

#include "Lumen/AddrLengthText.h"

namespace Lumen {

template <class Addr>
BasicAddrWithMask<Addr> BasicAddrWithMask<Addr>::parse(std::string_view text) {
   return parseAddrLength<BasicAddrWithMask>(text);
}

template <class Addr>
std::size_t BasicAddrWithMask<Addr>::formatTo(char* out) const noexcept {
   return formatAddrLength(*this, out);
}

template class BasicAddrWithMask<IpAddr>;
template class BasicAddrWithMask<Ip6Addr>;

}  // namespace Lumen
