#pragma once

#include "programs/kernel/RtnlBytes.h"
#include "support/Testing.h"

#include <linux/netlink.h>

// Writes dumps as the kernel would, for what no recorded machine shows.
namespace kernelTest {

using ByteVector = std::vector<std::byte>;

template <class T>
void appendValue(ByteVector& bytes, T const& value) {
   auto const* const first = reinterpret_cast<std::byte const*>(&value);
   bytes.insert(bytes.end(), first, first + sizeof(T));
}

class Attributes {
 public:
   template <class T>
   Attributes& add(U16 type, T const& value) {
      ByteVector payload;
      appendValue(payload, value);
      return addBytes(type, payload);
   }
   Attributes& add(U16 type, char const* text) {
      auto const* const first = reinterpret_cast<std::byte const*>(text);
      return addBytes(type, {first, first + std::strlen(text) + 1});
   }
   Attributes& add(U16 type, Attributes const& nested) { return addBytes(type, nested.bytes_); }
   Attributes& addBytes(U16 type, ByteVector const& payload) {
      appendValue(bytes_, static_cast<U16>(4 + payload.size()));
      appendValue(bytes_, type);
      bytes_.insert(bytes_.end(), payload.begin(), payload.end());
      bytes_.resize((bytes_.size() + 3) / 4 * 4);
      return *this;
   }

   ByteVector const& bytes() const { return bytes_; }

 private:
   ByteVector bytes_;
};

class DumpBuilder {
 public:
   template <class Header>
   DumpBuilder& add(U16 type, Header const& header, Attributes const& attributes = {}, U16 flags = 0) {
      std::size_t const size = sizeof(nlmsghdr) + sizeof(Header) + attributes.bytes().size();
      appendValue(bytes_, nlmsghdr{static_cast<U32>(size), type, flags, 1, 0});
      appendValue(bytes_, header);
      bytes_.insert(bytes_.end(), attributes.bytes().begin(), attributes.bytes().end());
      return *this;
   }

   ByteVector done(S32 error = 0) { return DumpBuilder(*this).add(NLMSG_DONE, error).bytes_; }
   ByteVector const& bytes() const { return bytes_; }

 private:
   ByteVector bytes_;
};

}  // namespace kernelTest
