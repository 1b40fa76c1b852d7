#include "Lumen/Ip6Addr.h"

#include "Lumen/IpAddr.h"
#include "Lumen/TextCursor.h"
#include "Lumen/TextDigits.h"
#include "Zam/Error.h"

#include <array>
#include <bit>

namespace Lumen {
namespace {

constexpr unsigned groups = 8;
constexpr U64 mappedHead = 0xffff;  // what is above the 32 bits of an IPv4-mapped address

// The groups of an address as they are met, and where "::" stood among them.
class GroupReader {
 public:
   bool read(TextCursor& in) noexcept {
      if (in.accept(':') && !readGap(in)) {
         return false;
      }
      for (;;) {
         if (gap_ == size_ && !in.nextIsHex()) {
            return true;
         }
         if (!readGroup(in)) {
            return false;
         }
         if (tail_ || size_ == groups || !in.accept(':')) {
            return (size_ == groups) == (gap_ == noGap);
         }
         readGap(in);
      }
   }

   // With zeros where "::" stood.
   Ip6Addr addr() const noexcept {
      unsigned const head = gap_ == noGap ? size_ : gap_;
      std::array<U64, 2> words{};
      for (unsigned i = 0; i < size_; ++i) {
         unsigned const at = i < head ? i : groups - size_ + i;
         words[at / 4] |= U64{values_[i]} << (48 - 16 * (at % 4));
      }
      return Ip6Addr(words[0], words[1]);
   }

 private:
   static constexpr unsigned noGap = groups + 1;

   // The second colon of the only "::".
   bool readGap(TextCursor& in) noexcept {
      if (gap_ != noGap || !in.accept(':')) {
         return false;
      }
      gap_ = size_;
      return true;
   }

   bool readGroup(TextCursor& in) noexcept {
      TextCursor const begin = in;
      U32 value = 0;
      if (in.hex(value, 4) == 0) {
         return false;
      }
      if (in.peek() == '.') {
         in = begin;
         return readTail(in);
      }
      values_[size_++] = static_cast<U16>(value);
      return true;
   }

   // The last two groups written as an IPv4 address.
   bool readTail(TextCursor& in) noexcept {
      IpAddr tail;
      if (size_ > groups - 2 || !IpAddr::read(in, tail)) {
         return false;
      }
      values_[size_++] = static_cast<U16>(tail.value() >> 16);
      values_[size_++] = static_cast<U16>(tail.value());
      tail_ = true;
      return true;
   }

   std::array<U16, groups> values_{};
   unsigned size_ = 0;
   unsigned gap_ = noGap;
   bool tail_ = false;
};

struct ZeroRun {
   U8 begin;
   U8 end;
};

// The longest run of two or more, the first of equals; behind the last group when there is none.
constexpr ZeroRun longestRun(unsigned mask) noexcept {
   unsigned first = groups;
   unsigned longest = 1;
   for (unsigned begin = 0; begin < groups; ++begin) {
      auto const size = static_cast<unsigned>(std::countr_one(mask >> begin));
      if (size > longest) {
         first = begin;
         longest = size;
      }
   }
   return {static_cast<U8>(first), static_cast<U8>(first == groups ? groups : first + longest)};
}

// The run of groups to compress, by a mask with bit i set where group i is zero.
constexpr auto zeroRuns = [] {
   std::array<ZeroRun, 1U << groups> runs{};
   for (unsigned mask = 0; mask < runs.size(); ++mask) {
      runs[mask] = longestRun(mask);
   }
   return runs;
}();

// Without leading zeros. Always moves four characters; they are within maxTextLength wherever the group is.
char* formatGroup(char* out, U32 group) noexcept {
   unsigned const size = 1U + (group > 0xf) + (group > 0xff) + (group > 0xfff);
   U32 const digits = group << (16 - 4 * size);
   formatHexPair(formatHexPair(out, digits >> 8), digits);
   return out + size;
}

}  // namespace

bool Ip6Addr::read(TextCursor& in, Ip6Addr& addr) noexcept {
   GroupReader reader;
   bool const good = reader.read(in);
   addr = reader.addr();
   return good;
}

Ip6Addr Ip6Addr::parse(std::string_view text) {
   Ip6Addr addr;
   if (!readWhole(text, addr)) {
      throw Zam::ParseError("an IPv6 address", text);
   }
   return addr;
}

std::size_t Ip6Addr::formatTo(char* out) const noexcept {
   if (hi_ == 0 && lo_ >> 32 == mappedHead) {
      char* const tail = formatText(out, "::ffff:");
      return static_cast<std::size_t>(tail - out) + IpAddr(static_cast<U32>(lo_)).formatTo(tail);
   }
   auto const group = [this](unsigned i) { return static_cast<U16>((i < 4 ? hi_ : lo_) >> (48 - 16 * (i % 4))); };
   unsigned zeros = 0;
   for (unsigned i = 0; i < groups; ++i) {
      zeros |= static_cast<unsigned>(group(i) == 0) << i;
   }
   auto const [begin, end] = zeroRuns[zeros];
   char* at = out;
   for (unsigned i = 0; i < groups;) {
      if (i == begin) {
         at = formatText(at, "::");
         i = end;
      } else {
         if (i != 0 && i != end) {
            *at++ = ':';
         }
         at = formatGroup(at, group(i++));
      }
   }
   return static_cast<std::size_t>(at - out);
}

}  // namespace Lumen
