#pragma once

#include "Zam/HashMap.h"
#include "state/text/Json.h"
#include "state/text/JsonWriter.h"
#include "state/text/Schema.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

// Records of a snapshot, each described once: a table of its members, by name, with the kind of value that each has and
// where it is in the record. The reader, the writer and the schema follow from the table.
//
// A kind of value is a type with a Value and
//    static Value read(Node const&, Reading&);
//    static void write(JsonWriter&, Writing const&, Value const&);
//    static std::string schema(Schema&);   the members of its schema
// and, when a schema can show its default, `static constexpr bool isPlain = true`.
namespace state {

struct Reading;
struct Writing;
U8 partOf(Reading const& reading);
U8 partOf(Writing const& writing);

// The documents that members are in, as bits: a snapshot has them all, the two files of a state directory have what is
// in no table and what is configured.
enum Part : U8 { snapshotPart = 1, entitiesPart = 2, configPart = 4 };

template <class R>
struct Member {
   std::string_view name;
   void (*read)(Node const&, Reading&, R&);
   bool (*isSet)(R const&);  // or else it is left out
   void (*write)(JsonWriter&, Writing const&, R const&);
   std::string (*schema)(Schema&);
   std::string_view description{};
   bool isRequired = false;
   U8 parts = snapshotPart | entitiesPart | configPart;

   constexpr Member about(std::string_view text) const {
      Member member = *this;
      member.description = text;
      return member;
   }
   constexpr Member required() const {
      Member member = *this;
      member.isRequired = true;
      return member;
   }
   constexpr Member in(U8 documents) const {
      Member member = *this;
      member.parts = documents;
      return member;
   }
   constexpr Member notIn(U8 documents) const { return in(static_cast<U8>(parts & ~documents)); }
};

// Where a member's value is: behind one or more data members.
template <auto first, auto... rest>
struct At {
   template <class R, class V>
   static R recordOf(V R::*);
   using Record = decltype(recordOf(first));

   static auto const& get(Record const& record) { return ((record.*first).*....*rest); }
   static auto& ref(Record& record) { return ((record.*first).*....*rest); }
   template <class V>
   static void set(Record& record, V&& value, Node const&) {
      ref(record) = std::forward<V>(value);
   }
};

namespace detail {

template <class T>
constexpr bool isOptional = false;
template <class T>
constexpr bool isOptional<std::optional<T>> = true;
template <class T>
constexpr bool isVector = false;
template <class T>
constexpr bool isVector<std::vector<T>> = true;

template <class Kind, class Access>
struct MemberOf {
   using R = typename Access::Record;

   static void read(Node const& node, Reading& reading, R& record) {
      Access::set(record, Kind::read(node, reading), node);
   }
   static bool isSet(R const& record) {
      auto const& value = Access::get(record);
      using V = std::decay_t<decltype(value)>;
      if constexpr (requires { Kind::isEmpty(value); }) {
         return !Kind::isEmpty(value);
      } else if constexpr (isOptional<V>) {
         return value.has_value();
      } else if constexpr (isVector<V>) {
         return !value.empty();
      } else {
         static R const fresh{};
         return !(value == Access::get(fresh));
      }
   }
   static void write(JsonWriter& out, Writing const& writing, R const& record) {
      auto const& value = Access::get(record);
      if constexpr (isOptional<std::decay_t<decltype(value)>>) {
         Kind::write(out, writing, *value);
      } else {
         Kind::write(out, writing, value);
      }
   }
   static std::string schema(Schema& schema) {
      std::string text = Kind::schema(schema);
      if constexpr (requires { Kind::isPlain; } && !isOptional<std::decay_t<decltype(Access::get(R{}))>>) {
         JsonWriter out(text.append(",\"default\":"));
         Kind::writePlain(out, Access::get(R{}));
      }
      return text;
   }
};

template <class R>
Member<R> const& memberNamed(std::span<Member<R> const> members, Node const& node, U8 part) {
   for (Member<R> const& member : members) {
      if (member.name == node.key() && (member.parts & part) != 0) {
         return member;
      }
   }
   node.fail("unknown member");
}

}  // namespace detail

// A table's entry for what is behind data members, or what a type of its own gets and sets: one with a Record,
// std::optional<V> get(Record const&), none for what is left out, and set(Record&, V, Node const&).
template <class Kind, class Access>
constexpr auto member(std::string_view name) {
   using Of = detail::MemberOf<Kind, Access>;
   return Member<typename Of::R>{name, Of::read, Of::isSet, Of::write, Of::schema};
}
template <class Kind, auto first, auto... rest>
constexpr auto member(std::string_view name) {
   return member<Kind, At<first, rest...>>(name);
}

// The members, of which a configuration has but one.
template <class R, std::size_t size>
constexpr std::array<Member<R>, size> configuredBy(std::string_view name, std::array<Member<R>, size> members) {
   for (Member<R>& member : members) {
      if (member.name != name) {
         member = member.notIn(configPart);
      }
   }
   return members;
}

// Reads the members in the order of the document; every other member, and one that is given twice, is an error.
template <class R>
void readMembers(Node const& node, Reading& reading, std::span<Member<R> const> members, U8 part, R& record) {
   U32 seen = 0;
   for (auto const field : node.object()) {
      Node const value(node, field.key, field.value);
      Member<R> const& member = detail::memberNamed(members, value, part);
      U32 const bit = U32{1} << (&member - members.data());
      if ((seen & bit) != 0) {
         value.fail("given twice");
      }
      seen |= bit;
      member.read(value, reading, record);
   }
   for (std::size_t i = 0; i < members.size(); ++i) {
      if (members[i].isRequired && (seen >> i & 1U) == 0) {
         node.fail("member " + jsonQuoted(members[i].name) + " is missing");
      }
   }
}

template <class R>
void writeMembers(JsonWriter& out, Writing const& writing, std::span<Member<R> const> members, U8 part,
                  R const& record) {
   for (Member<R> const& member : members) {
      if ((member.parts & part) != 0 && (member.isRequired || member.isSet(record))) {
         out.key(member.name);
         member.write(out, writing, record);
      }
   }
}

template <class R>
std::string schemaOf(std::span<Member<R> const> members, Schema& schema) {
   Schema::Members properties;
   Schema::Members required;
   for (Member<R> const& member : members) {
      std::string const about =
          member.description.empty() ? "" : "\"description\":" + jsonQuoted(member.description) + ",";
      std::string text = member.schema(schema);
      if (member.isRequired) {
         text.resize(std::min(text.find(",\"default\":"), text.size()));
         required.add(jsonQuoted(member.name));
      }
      properties.add(jsonQuoted(member.name) + ":{" + about + text + "}");
   }
   return "\"type\":\"object\",\"additionalProperties\":false" +
          (required.text().empty() ? "" : ",\"required\":[" + required.text() + "]") + ",\"properties\":{" +
          properties.text() + "}";
}

// The kind of a record: of a description with a Value and its table, `members`. It may have a `name`, under which the
// schema has it once, a `check` of what was read as a whole, and its `rules` in the words of the schema.
template <class Description>
struct Object {
   using Value = typename Description::Value;
   static constexpr std::span<Member<Value> const> members() { return Description::members; }

   static Value read(Node const& node, Reading& reading) {
      Value value{};
      readInto(node, reading, value);
      return value;
   }
   static void readInto(Node const& node, Reading& reading, Value& value) {
      readMembers(node, reading, members(), partOf(reading), value);
      if constexpr (requires { Description::check(node, reading, value); }) {
         Description::check(node, reading, value);
      }
   }
   static void write(JsonWriter& out, Writing const& writing, Value const& value) {
      out.open('{');
      writeMembers(out, writing, members(), partOf(writing), value);
      out.close('}');
   }
   static std::string schema(Schema& schema) {
      auto const text = [&] {
         std::string all = schemaOf(members(), schema);
         if constexpr (requires { Description::rules; }) {
            all.append(",").append(Description::rules);
         }
         return all;
      };
      if constexpr (requires { Description::name; }) {
         return schema.defined(Description::name, text);
      } else {
         return text();
      }
   }
};

// A list of values of a kind.
template <class Kind>
struct List {
   using Value = std::vector<typename Kind::Value>;

   static Value read(Node const& node, Reading& reading) {
      Value values;
      node.forEachElement([&](Node const& element) { values.push_back(Kind::read(element, reading)); });
      return values;
   }
   static void write(JsonWriter& out, Writing const& writing, Value const& values) {
      out.open('[');
      for (auto const& value : values) {
         Kind::write(out, writing, value);
      }
      out.close(']');
   }
   static std::string schema(Schema& schema) { return "\"type\":\"array\",\"items\":{" + Kind::schema(schema) + "}"; }
};

// A list of what has a key of its own, which Keyed::key(value) tells; one key twice is an error.
template <class Kind, class Keyed>
struct UniqueList : List<Kind> {
   using typename List<Kind>::Value;

   static Value read(Node const& node, Reading& reading) {
      Value values;
      Zam::HashMap<std::decay_t<decltype(Keyed::key(values.front()))>, bool> seen;
      node.forEachElement([&](Node const& element) {
         auto value = Kind::read(element, reading);
         if (seen.contains(Keyed::key(value))) {
            element.fail(Keyed::repeated(value));
         }
         seen.insertOrReplace(Keyed::key(value), true);
         values.push_back(std::move(value));
      });
      return values;
   }
};

// The key of what has it in one place, or is its own.
struct KeyBase {
   static std::string_view repeated(auto const&) { return "given twice"; }
};
template <auto... path>
struct By : KeyBase {
   static auto const& key(auto const& value) { return (value.*....*path); }
};
template <>
struct By<> : KeyBase {
   static auto const& key(auto const& value) { return value; }
};

// An object whose keys are names: of values of a kind that reads its own key from the node and tells it by
// `static std::string key(Writing const&, Value const&)`; `keySchema` is what the schema says of the keys.
template <class Kind>
struct Named {
   using Value = std::vector<typename Kind::Value>;

   static Value read(Node const& node, Reading& reading) {
      Value values;
      node.forEachMember([&](Node const& element) { values.push_back(Kind::read(element, reading)); });
      return values;
   }
   static void write(JsonWriter& out, Writing const& writing, Value const& values) {
      out.open('{');
      for (auto const& value : values) {
         out.key(Kind::key(writing, value));
         Kind::write(out, writing, value);
      }
      out.close('}');
   }
   static std::string schema(Schema& schema) {
      return "\"type\":\"object\"" + std::string(Kind::keySchema) + ",\"additionalProperties\":{" +
             Kind::schema(schema) + "}";
   }
};

}  // namespace state
