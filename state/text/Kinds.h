#pragma once

#include "Lumen/Ip6AddrWithMask.h"
#include "Lumen/IpAddrWithMask.h"
#include "state/text/Context.h"
#include "state/text/Record.h"

#include <algorithm>
#include <limits>

// The kinds of values that records of several sections have.
namespace state {

struct Flag {
   using Value = bool;
   static constexpr bool isPlain = true;

   static bool read(Node const& node, Reading&) { return node.boolean(); }
   static void writePlain(JsonWriter& out, bool value) { out.boolean(value); }
   static void write(JsonWriter& out, Writing const&, bool value) { out.boolean(value); }
   static std::string schema(Schema&) { return "\"type\":\"boolean\""; }
};

std::string numberSchema(Schema& schema, U64 min, U64 max);

// From `min` to `max`; `why`, when there is one, is what is wrong with a smaller one.
template <class T, U64 min = 0, U64 max = std::numeric_limits<T>::max(), char const* why = nullptr>
struct Number {
   using Value = T;
   static constexpr bool isPlain = true;

   static T read(Node const& node, Reading&) {
      U64 const value = node.number(max);
      if (value < min) {
         node.fail(why != nullptr ? why : "not from " + std::to_string(min) + " to " + std::to_string(max));
      }
      return static_cast<T>(value);
   }
   static void writePlain(JsonWriter& out, T value) { out.number(value); }
   static void write(JsonWriter& out, Writing const&, T value) { out.number(value); }
   static std::string schema(Schema& schema) { return numberSchema(schema, min, max); }
};

// A number that is a type of its own, which tells it as value().
template <class T, U64 max>
struct NumberOf {
   using Value = T;

   static T read(Node const& node, Reading&) { return T(static_cast<U32>(node.number(max))); }
   static void write(JsonWriter& out, Writing const&, T const& value) { out.number(value.value()); }
   static std::string schema(Schema& schema) { return numberSchema(schema, 0, max); }
};

// One that is carried as it is, whatever it stands for: what reads the tables has to cope with it.
template <class T, class U>
struct RawNumber {
   using Value = T;

   static T read(Node const& node, Reading&) { return T::fromRaw(node.number<U>()); }
   static void write(JsonWriter& out, Writing const&, T value) { out.number(value.raw()); }
   static std::string schema(Schema& schema) { return numberSchema(schema, 0, std::numeric_limits<U>::max()); }
};

template <class T>
struct TextOf {
   using Value = T;

   static T read(Node const& node, Reading&) { return T(node.text()); }
   static void write(JsonWriter& out, Writing const&, T const& value) { out.text(value); }
   static std::string schema(Schema&) { return "\"type\":\"string\""; }
};
using Text = TextOf<std::string>;

std::string patternSchema(Schema& schema, std::string_view name, std::string_view pattern);

// A text that a T parses: `name` is its definition in the schema, `form` what messages say of it.
template <class T, char const* name, char const* form, char const* pattern>
struct Parsed {
   using Value = T;

   static T read(Node const& node, Reading&) { return node.parsed<T>(form); }
   static void write(JsonWriter& out, Writing const&, T const& value) { out.text(value.stringValue()); }
   static std::string schema(Schema& schema) { return patternSchema(schema, name, pattern); }
};

inline constexpr char macName[] = "mac";
inline constexpr char macForm[] = "a MAC address";
inline constexpr char macPattern[] = "^([0-9a-fA-F]{2}:){5}[0-9a-fA-F]{2}$";
using Mac = Parsed<Lumen::EthAddr, macName, macForm, macPattern>;

inline constexpr char labelsName[] = "labels";
inline constexpr char labelsForm[] = "a label operation such as push 100 200";
inline constexpr char labelsPattern[] = "^(none|pop|push|swap)( [0-9]+){0,16}$";
using Labels = Parsed<Lumen::MplsLabelOperation, labelsName, labelsForm, labelsPattern>;

inline constexpr char ipv4Name[] = "ipv4Prefix";
inline constexpr char ipv4Form[] = "an IPv4 address with its length";
inline constexpr char ipv4Pattern[] = "^[0-9.]+/[0-9]{1,2}$";
using Address4 = Parsed<Lumen::IpAddrWithMask, ipv4Name, ipv4Form, ipv4Pattern>;

inline constexpr char ipv6Name[] = "ipv6Prefix";
inline constexpr char ipv6Form[] = "an IPv6 address with its length";
inline constexpr char ipv6Pattern[] = "^[0-9a-fA-F:.]*:[0-9a-fA-F:.]*/[0-9]{1,3}$";
using Address6 = Parsed<Lumen::Ip6AddrWithMask, ipv6Name, ipv6Form, ipv6Pattern>;

inline constexpr char rdName[] = "routeDistinguisher";
inline constexpr char rdForm[] = "a route distinguisher such as 65000:100";
inline constexpr char rdPattern[] = ":";
using Distinguisher = Parsed<Lumen::RouteDistinguisher, rdName, rdForm, rdPattern>;

// A prefix without host bits.
template <class Prefix>
struct PrefixKind {
   using Value = Prefix;

   static Prefix read(Node const& node, Reading&) {
      using WithMask = Lumen::BasicAddrWithMask<typename Prefix::AddrType>;
      auto const value = node.parsed<WithMask>(Prefix::maxLength == 32 ? "an IPv4 prefix" : "an IPv6 prefix");
      if (value.subnet().address() != value.address()) {
         node.fail("host bits set");
      }
      return value.subnet();
   }
   static void write(JsonWriter& out, Writing const&, Prefix const& value) { out.text(value.stringValue()); }
   static std::string schema(Schema& schema) {
      return Prefix::maxLength == 32 ? Address4::schema(schema) : Address6::schema(schema);
   }
};

struct GenPrefix {
   using Value = Lumen::IpGenPrefix;
   static Value read(Node const& node, Reading& reading);
   static void write(JsonWriter& out, Writing const&, Value const& value) { out.text(value.stringValue()); }
   static std::string schema(Schema& schema);
};

struct GenAddr {
   using Value = Lumen::IpGenAddr;
   static Value read(Node const& node, Reading& reading);
   static void write(JsonWriter& out, Writing const&, Value const& value) { out.text(value.stringValue()); }
   static std::string schema(Schema& schema);
};

template <class Enum>
using Name = std::pair<std::string_view, Enum>;

template <auto const& names>
std::string namesSchema() {
   Schema::Members all;
   for (auto const& [name, value] : names) {
      all.add(jsonQuoted(name));
   }
   return "\"enum\":[" + all.text() + "]";
}

// One of a list of names.
template <auto const& names>
struct OneOf {
   using Value = std::decay_t<decltype(names[0].second)>;
   static constexpr bool isPlain = true;

   static Value read(Node const& node, Reading&) {
      std::string expected = "not one of";
      for (auto const& [name, value] : names) {
         if (name == node.text()) {
            return value;
         }
         expected.append(" ").append(name);
      }
      node.fail(expected);
   }
   static bool hasName(Value value) {
      return std::ranges::any_of(names, [value](auto const& named) { return named.second == value; });
   }
   // Empty when it has no name.
   static void writePlain(JsonWriter& out, Value value) {
      auto const named = std::ranges::find_if(names, [value](auto const& each) { return each.second == value; });
      out.text(named != std::ranges::end(names) ? named->first : std::string_view());
   }
   static void write(JsonWriter& out, Writing const&, Value value) {
      if (!hasName(value)) {
         cannotSay("the type " + std::to_string(static_cast<U64>(value)));
      }
      writePlain(out, value);
   }
   static std::string schema(Schema&) { return namesSchema<names>(); }
};

// One of a list of names, or the number behind it.
template <auto const& names, U64 max>
struct NameOrNumber {
   using Value = typename OneOf<names>::Value;
   static constexpr bool isPlain = true;

   static Value read(Node const& node, Reading& reading) {
      return node.isText() ? OneOf<names>::read(node, reading) : static_cast<Value>(node.number(max));
   }
   static void writePlain(JsonWriter& out, Value value) {
      OneOf<names>::hasName(value) ? OneOf<names>::writePlain(out, value) : out.number(static_cast<U64>(value));
   }
   static void write(JsonWriter& out, Writing const&, Value value) { writePlain(out, value); }
   static std::string schema(Schema& schema) {
      return "\"anyOf\":[{" + numberSchema(schema, 0, max) + "},{" + namesSchema<names>() + "}]";
   }
};

constexpr U64 maxU8 = std::numeric_limits<U8>::max();

struct VrfRef {
   using Value = VrfId;
   static Value read(Node const& node, Reading& reading) { return reading.vrf(node); }
   static void write(JsonWriter& out, Writing const& writing, Value id) { out.text(writing.vrf(id)); }
   static std::string schema(Schema&) { return "\"type\":\"string\""; }
};

struct GroupRef {
   using Value = U32;
   static Value read(Node const& node, Reading& reading) { return reading.nexthopGroup(node); }
   static void write(JsonWriter& out, Writing const& writing, Value id) { out.text(writing.nexthopGroup(id)); }
   static std::string schema(Schema&) { return "\"type\":\"string\""; }
};

struct InterfaceRef {
   using Value = Lumen::IntfId;
   static Value read(Node const& node, Reading& reading) { return reading.interface(node); }
   static void write(JsonWriter& out, Writing const&, Value const& intfId);
   static std::string schema(Schema&) { return "\"type\":\"string\""; }
};

std::string fecSchema(Schema& schema);

inline FecId anyFec(Reading const&, Node const& node) {
   return fecIdOf(node, node.text());
}

// A FEC, kept as a T; `find` tells which ones may be named.
template <FecId (*find)(Reading const&, Node const&), class T = FecId>
struct FecRef {
   using Value = T;
   static T read(Node const& node, Reading& reading) {
      FecId const fecId = find(reading, node);
      if constexpr (std::is_same_v<T, U64>) {
         return fecId.value();
      } else {
         return fecId;
      }
   }
   static void write(JsonWriter& out, Writing const&, T const& fecId) { out.text(fecText(FecId(fecId))); }
   static std::string schema(Schema& schema) { return fecSchema(schema); }
};

inline FecId namedFec(Reading const& reading, Node const& node) {
   return reading.fec(node);
}
inline FecId namedPolicyFec(Reading const& reading, Node const& node) {
   return reading.policyFec(node);
}
inline FecId namedRouteFec(Reading const& reading, Node const& node) {
   return reading.routeFec(node);
}

// {"type": "isisSr", "index": 5}: the type of a tunnel, by name or number, and its index within it.
struct TunnelRef {
   using Value = Tunnel::TunnelId;
   static Value read(Node const& node, Reading& reading);
   static void write(JsonWriter& out, Writing const& writing, Value tunnelId);
   static std::string schema(Schema& schema);
};

// A tunnel that something is said of; 0 is none.
struct OwnTunnel : TunnelRef {
   static Value read(Node const& node, Reading& reading);
};

// {"type": "gre", "destination": "10.0.0.1"}: an outer header.
struct IpEncap {
   using Value = Tunnel::IpTunnelEncap;
   static Value read(Node const& node, Reading& reading);
   static void write(JsonWriter& out, Writing const& writing, Value const& encap);
   static std::string schema(Schema& schema);
};

struct EvpnVia {
   using Value = Tunnel::TunnelTable::EvpnVxlanTunnelEntry;
   static Value read(Node const& node, Reading& reading);
   static void write(JsonWriter& out, Writing const& writing, Value const& via);
   static std::string schema(Schema& schema);
};

// What a via leaves through, when that is of one kind; each of the kinds is a member of its own.
template <Lumen::IntfId::Kind kind, auto... path>
struct Exit {
   using Place = At<path...>;
   using Record = typename Place::Record;

   static std::optional<Lumen::IntfId> get(Record const& via) {
      Lumen::IntfId const& exit = Place::get(via);
      return exit.kind() == kind ? std::optional(exit) : std::nullopt;
   }
   static void set(Record& via, Lumen::IntfId const& intfId, Node const& node) {
      exitIs(node, Place::ref(via), intfId);
   }
};

// An exit that is not an interface: what stands for it, as a kind of its own has it.
template <class Ref, auto make, auto of>
struct ExitRef {
   using Value = Lumen::IntfId;
   static Value read(Node const& node, Reading& reading) { return make(Ref::read(node, reading)); }
   static void write(JsonWriter& out, Writing const& writing, Value const& exit) {
      Ref::write(out, writing, (exit.*of)());
   }
   static std::string schema(Schema& schema) { return Ref::schema(schema); }
};
using ExitFec = ExitRef<FecRef<namedFec, U64>, &Lumen::IntfId::fromFecId, &Lumen::IntfId::fecId>;
using ExitGroup = ExitRef<GroupRef, &Lumen::IntfId::fromNexthopGroup, &Lumen::IntfId::nexthopGroupId>;
using ExitTunnel = ExitRef<OwnTunnel, &Lumen::IntfId::fromTunnelId, &Lumen::IntfId::tunnelId>;

template <auto... path>
constexpr auto interfaceExit = member<InterfaceRef, Exit<Lumen::IntfId::Kind::named, path...>>("interface");
template <auto... path>
constexpr auto fecExit = member<ExitFec, Exit<Lumen::IntfId::Kind::fec, path...>>("fec");
template <auto... path>
constexpr auto groupExit = member<ExitGroup, Exit<Lumen::IntfId::Kind::nexthopGroup, path...>>("nexthopGroup");
template <auto... path>
constexpr auto tunnelExit = member<ExitTunnel, Exit<Lumen::IntfId::Kind::dynamicTunnel, path...>>("tunnel");

// A VXLAN header's key is a VNI.
void checkVniKey(Node const& node, bool isVxlan, U32 key);

}  // namespace state
