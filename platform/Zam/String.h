#pragma once

#include "Zam/Error.h"
#include "Zam/Int.h"

#include <compare>
#include <functional>
#include <limits>
#include <string>
#include <string_view>

namespace Zam {

// The runtime's string: bytes of any value up to maxLength(), a RangeError beyond. Compares byte-wise as unsigned
// chars.
template <U32 MaxLength>
class BoundedString {
 public:
   static constexpr U32 maxLength() noexcept { return MaxLength; }

   BoundedString() noexcept = default;
   BoundedString(char const* text) : BoundedString(std::string_view(text)) {}  // NOLINT(google-explicit-constructor)
   BoundedString(std::string_view text)
       : BoundedString(std::string(checked(text))) {}  // NOLINT(google-explicit-constructor)
   BoundedString(std::string text) : bytes_(std::move(text)) {
      checked(bytes_);
   }  // NOLINT(google-explicit-constructor)

   std::string const& bytes() const noexcept { return bytes_; }
   char const* charPtr() const noexcept { return bytes_.c_str(); }
   U32 length() const noexcept { return static_cast<U32>(bytes_.size()); }
   bool empty() const noexcept { return bytes_.empty(); }
   explicit operator bool() const noexcept { return !bytes_.empty(); }
   operator std::string_view() const noexcept { return bytes_; }  // NOLINT(google-explicit-constructor)

   BoundedString& operator+=(std::string_view more) {
      if (more.size() > MaxLength - bytes_.size()) {
         throw RangeError(rangeMessage);
      }
      bytes_ += more;
      return *this;
   }

   bool operator==(BoundedString const&) const noexcept = default;
   std::strong_ordering operator<=>(BoundedString const&) const noexcept = default;

 private:
   static constexpr char const* rangeMessage = "Zam::String::bytes > maxLength() not allowed";

   static std::string_view checked(std::string_view text) {
      if (text.size() > MaxLength) {
         throw RangeError(rangeMessage);
      }
      return text;
   }

   std::string bytes_;
};

// Wide enough for configuration text; the bound keeps a length in a U32 and a runaway append from eating the box.
using String = BoundedString<std::numeric_limits<S32>::max()>;

}  // namespace Zam

template <U32 MaxLength>
struct std::hash<Zam::BoundedString<MaxLength>> {
   std::size_t operator()(Zam::BoundedString<MaxLength> const& s) const noexcept {
      return std::hash<std::string_view>{}(s);
   }
};
