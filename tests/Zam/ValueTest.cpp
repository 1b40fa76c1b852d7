#include "Zam/HashMap.h"
#include "Zam/OrderedMap.h"
#include "Zam/Value.h"
#include "support/Testing.h"

namespace TestTypes {

struct Inner : Zam::ValueType {
   S32 number = -1;
   Zam::BoundedString<8> name;

   static constexpr auto zamDescription() {
      return Zam::describe<Inner>("TestTypes::Inner", Zam::attribute("number", &Inner::number),
                                  Zam::attribute("name", &Inner::name));
   }
};

struct Outer : Zam::ValueType {
   U8 preference = 1;
   bool flag = false;
   Inner inner;
   Zam::Ptr<Zam::PtrInterface const> entity;

   static constexpr auto zamDescription() {
      return Zam::describe<Outer>("TestTypes::Outer", Zam::attribute("preference", &Outer::preference),
                                  Zam::attribute("flag", &Outer::flag), Zam::attribute("inner", &Outer::inner),
                                  Zam::attribute("entity", &Outer::entity));
   }
};

struct Holder : Zam::ValueType {
   U32 tag = 0;
   Zam::OrderedMap<U32, Zam::String> ordered;
   Zam::HashMap<U32, Zam::String> hashed;

   static constexpr auto zamDescription() {
      return Zam::describe<Holder>("TestTypes::Holder", Zam::attribute("tag", &Holder::tag),
                                   Zam::collection("ordered", &Holder::ordered),
                                   Zam::collection("hashed", &Holder::hashed));
   }
};

// What makes a forgotten attribute break the build.
static_assert(Zam::detail::takesInitializers<Outer, 4> && !Zam::detail::takesInitializers<Outer, 5>);

}  // namespace TestTypes

namespace {

using TestTypes::Holder;
using TestTypes::Inner;
using TestTypes::Outer;
using Zam::strepToValue;
using Zam::valueToStrep;

constexpr std::string_view outerText =
    "Value('TestTypes::Outer', ** {'preference': 200, 'flag': True, "
    "'inner': Value('TestTypes::Inner', ** {'number': -5, 'name': 'it\\'s'}), 'entity': None})";

Outer outer() {
   return {{}, 200, true, {{}, -5, "it's"}, nullptr};
}

TEST(Value, TextualFormIsWrittenAndReadBack) {
   std::ostringstream stream;
   stream << outer();
   EXPECT_EQ(stream.view(), outerText);
   EXPECT_EQ(strepToValue<Outer>(outerText), outer());
}

TEST(Value, DamagedTextIsRefusedOrAnotherValuesText) {
   std::string const text(outerText);
   std::size_t parsed = 0;
   for (std::size_t at = 0; at != text.size(); ++at) {
      EXPECT_THROW(strepToValue<Outer>(text.substr(0, at)), Zam::ParseError) << at;
      for (std::string_view const damage : {" ", "'", "0", "\\"}) {
         auto const damaged = text.substr(0, at).append(damage) + text.substr(at);
         try {
            EXPECT_EQ(valueToStrep(strepToValue<Outer>(damaged)), damaged);
            ++parsed;
         } catch (Zam::ParseError const&) {
         } catch (Zam::RangeError const&) {
         }
      }
   }
   // The string takes a blank or zero in five places and a backslash before its t, and a number a zero behind it.
   EXPECT_EQ(parsed, 5U + 5U + 1U + 1U);
   EXPECT_THROW(strepToValue<Outer>(text + "x"), Zam::ParseError);
}

TEST(Value, EqualityHashAndTruthSeeEveryAttribute) {
   struct Entity : Zam::PtrInterface {
      std::string_view fwkType() const noexcept override { return "Test::Entity"; }
   };
   std::vector<Outer> values(6);
   values[1].preference = 2;
   values[2].flag = true;
   values[3].inner.number = 0;
   values[4].inner.name = "x";
   values[5].entity = Zam::makePtr<Entity>();
   std::unordered_set<Outer> const distinct(values.begin(), values.end());
   EXPECT_EQ(distinct.size(), 6U);
   std::set<std::size_t> hashes;
   EXPECT_NE(Zam::combinedHash(std::size_t(1), std::size_t(2)), Zam::combinedHash(std::size_t(2), std::size_t(1)));
   for (auto const& value : distinct) {
      EXPECT_EQ(isSet(value), value != values[0]) << value;
      EXPECT_TRUE(hashes.insert(std::hash<Outer>()(value)).second) << value;
   }
}

TEST(Value, CollectionsCountButAreNotWritten) {
   Holder a;
   Holder b;
   for (U32 i = 0; i != 4; ++i) {  // the same in the other order
      a.hashed.insertOrReplace(300 * i, "x");
      a.ordered.insertOrReplace(300 * i, "x");
      b.hashed.insertOrReplace(900 - 300 * i, "x");
      b.ordered.insertOrReplace(900 - 300 * i, "x");
   }
   EXPECT_EQ(a, b);
   EXPECT_EQ(std::hash<Holder>()(a), std::hash<Holder>()(b));
   EXPECT_TRUE(isSet(a));
   EXPECT_EQ(valueToStrep(a), "Value('TestTypes::Holder', ** {'tag': 0, 'ordered': None, 'hashed': None})");
   b.hashed.erase(300);
   EXPECT_NE(a, b);
}

TEST(ValueDeathTest, ParsingATypeWithACollectionIsAProgrammingError) {
   for (auto const& text : {std::string(), valueToStrep(Holder())}) {
      EXPECT_DEATH(strepToValue<Holder>(text),
                   "\"No String constructor for Holder - has collection\" == nullptr, "
                   "source TestTypes/CliSupport");
   }
}

}  // namespace
