#include "Vault/ForwardingStatus.h"
#include "Vault/RouteStatus.h"
#include "Zam/Error.h"
#include "tests/fuzz/Targets.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace fuzz {

namespace {

using Vault::TableHeader;

// A file in memory that tables can be opened from by name, put back to what it was for each input.
class Image {
 public:
   Image() : fd_(::memfd_create("table", MFD_CLOEXEC)) {}
   std::string path() const { return "/proc/self/fd/" + std::to_string(fd_); }

   void takes(std::string const& file) {
      std::FILE* const in = std::fopen(file.c_str(), "rb");
      bytes_.resize(1 << 20);
      bytes_.resize(std::fread(bytes_.data(), 1, bytes_.size(), in));
      std::fclose(in);
      must(::ftruncate(fd_, static_cast<off_t>(bytes_.size())) == 0);
   }
   // Each patch is four bytes: where, twice, which byte of the word and how, and with what.
   void patched(Input patches, bool signedAgain) {
      std::vector<char> damaged = bytes_;
      for (; patches.size() >= 4; patches = patches.subspan(4)) {
         std::size_t const at = (patches[0] | patches[1] << 8U) * std::size_t{8} + (patches[2] & 7U);
         char& byte = damaged[at % damaged.size()];
         byte = static_cast<char>((patches[2] & 8U) != 0 ? byte ^ patches[3] : patches[3]);
      }
      if (signedAgain) {
         TableHeader header;
         std::memcpy(&header, damaged.data(), sizeof(header));
         std::uint64_t words[offsetof(TableHeader, sum) / 8];
         std::memcpy(words, &header, sizeof(words));
         header.sum = Vault::sumWords(words + 1, std::size(words) - 1);
         std::memcpy(damaged.data(), &header, sizeof(header));
      }
      must(::pwrite(fd_, damaged.data(), damaged.size(), 0) == static_cast<ssize_t>(damaged.size()));
   }

 private:
   int fd_;
   std::vector<char> bytes_;
};

// What it says of damage is in order.
template <class Act>
void survive(Act&& act) {
   try {
      act();
   } catch (Vault::MountError const&) {
   } catch (Vault::CorruptionError const&) {
   } catch (Vault::TableFull const&) {
   } catch (Zam::RangeError const&) {
   }
}

template <class Writer, class Fill>
Image soundImage(Vault::TableFile::Sizes sizes, Fill&& fill) {
   char directory[] = "/tmp/kivFuzzXXXXXX";
   must(::mkdtemp(directory) != nullptr);
   std::string const path = std::string(directory) + "/table";
   {
      Writer writer(path, sizes);
      fill(writer);
   }
   Image image;
   image.takes(path);
   must(::unlink(path.c_str()) == 0 && ::rmdir(directory) == 0);
   return image;
}

constexpr U32 entries = 12;

struct Routes {
   using Reader = Vault::Fib::RouteStatus;
   using Writer = Vault::Fib::RouteStatusWriter;
   static Lumen::Prefix key(U32 i) { return {Lumen::IpAddr(0x0a000000U + i * 2), 31}; }
   static void put(Writer& writer, U32 i) {
      writer.routeIs({.prefix = key(i), .metric = i, .fecId = Vault::Fib::FecId(i)});
   }
   static void drop(Writer& writer, U32 i) { writer.routeDel(key(i)); }
   static void look(Reader const& reader, U32 i) {
      auto const route = reader.route(key(i));
      must(!route || route->prefix == key(i));
   }
   static void walk(Reader const& reader) {
      reader.walk([](auto const& route) { must(route.prefix.length() <= 32); });
   }
};

struct Fecs {
   using Reader = Vault::Fib6::ForwardingStatus;
   using Writer = Vault::Fib6::ForwardingStatusWriter;
   using Fec = Vault::Fib6::Fec;
   static Fec fec(U32 i) {
      Fec made{.fecId = Vault::Fib::FecId(i + 1), .primaryVias = static_cast<U16>(i), .vias = {}};
      for (U32 via = 0; via < i % 4; ++via) {
         made.vias.push_back({.intfId = Lumen::IntfId::named("Ethernet" + std::to_string(via)),
                              .hop = Lumen::IpGenAddr(Lumen::IpAddr(via))});
      }
      return made;
   }
   static void put(Writer& writer, U32 i) { writer.fecIs(fec(i)); }
   static void drop(Writer& writer, U32 i) { writer.fecDel(Vault::Fib::FecId(i + 1)); }
   static void look(Reader const& reader, U32 i) {
      Fec found;
      must(!reader.fec(Vault::Fib::FecId(i + 1), found) || found.fecId == Vault::Fib::FecId(i + 1));
   }
   static void walk(Reader const& reader) {
      reader.walk([](Fec const& fec) { must(fec.vias.size() <= Vault::Fib::maxVias); });
   }
};

template <class Kind>
void tryTable(Input patches, bool signedAgain) {
   static Image image = soundImage<typename Kind::Writer>({16, 40}, [](auto& writer) {
      for (U32 i = 0; i < entries; ++i) {
         Kind::put(writer, i);
      }
   });
   image.patched(patches, signedAgain);
   survive([&] {
      typename Kind::Reader const reader(image.path());
      reader.corruptionHookIs([](std::string_view) {});
      survive([&] { Kind::walk(reader); });
      for (U32 i = 0; i < 2 * entries; ++i) {
         survive([&] { Kind::look(reader, i); });
      }
   });
   survive([&] {
      typename Kind::Writer writer(image.path());
      writer.corruptionHookIs([](std::string_view) {});
      writer.growingIs(false);
      for (U32 i = 0; i < 2 * entries; ++i) {
         survive([&] { i % 3 == 0 ? Kind::drop(writer, i) : Kind::put(writer, i); });
      }
   });
}

}  // namespace

void table(Input input) {
   if (input.empty()) {
      return;
   }
   bool const signedAgain = (input[0] & 2U) != 0;
   (input[0] & 1U) != 0 ? tryTable<Fecs>(input.subspan(1), signedAgain)
                        : tryTable<Routes>(input.subspan(1), signedAgain);
}

}  // namespace fuzz
