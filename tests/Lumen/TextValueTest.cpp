#include "Lumen/RandomValues.h"
#include "Zam/Error.h"
#include "support/Cases.h"

// What holds for every value type of the folder, over random values.
namespace Lumen::Test {
namespace {

template <class T>
class TextValueTest : public testing::Test {
 protected:
   static std::vector<T> values(std::size_t count) {
      Random random(count);
      std::vector<T> values{T()};
      while (values.size() < count) {
         values.push_back(random.value<T>());
      }
      return values;
   }
};

using Types = testing::Types<IpAddr, Ip6Addr, IpGenAddr, Prefix, Ip6Prefix, IpGenPrefix, IpAddrWithMask,
                             Ip6AddrWithMask, IntfId, MplsLabel, MplsLabelOperation, EthAddr, Vni, RouteDistinguisher>;
TYPED_TEST_SUITE(TextValueTest, Types);

TYPED_TEST(TextValueTest, TextsReadBackAndStayWithinTheirRoom) {
   for (auto const& value : this->values(20000)) {
      auto const text = value.stringValue();
      ASSERT_EQ(TypeParam::parse(text), value) << text;
      ASSERT_EQ(Zam::strepToValue<TypeParam>(Zam::valueToStrep(value)), value) << text;
      std::ostringstream stream;
      stream << value;
      ASSERT_EQ(stream.str(), text);
      std::vector<char> room(TypeParam::maxTextLength + 8, '~');
      ASSERT_LE(value.formatTo(room.data()), TypeParam::maxTextLength);
      ASSERT_EQ(std::count(room.begin() + TypeParam::maxTextLength, room.end(), '~'), 8) << value;
   }
}

// What a slip of the keyboard makes of a text is refused or another value, which reads back as well.
TYPED_TEST(TextValueTest, DamagedTextsAreRefusedOrReadBack) {
   Random random(6);
   for (auto const& value : this->values(10000)) {
      auto text = value.stringValue();
      for (U64 changes = 1 + random.below(3); changes != 0; --changes) {
         auto const character = std::string_view("0123456789abcdefABCDEFg:./- ")[random.below(28)];
         text.replace(random.below(text.size() + 1), random.below(2), random.below(2), character);
      }
      try {
         auto const read = TypeParam::parse(text);
         ASSERT_EQ(TypeParam::parse(read.stringValue()), read) << text;
      } catch (Zam::ParseError const&) {
      } catch (Zam::RangeError const&) {
      }
   }
}

TYPED_TEST(TextValueTest, EqualMeansTheSameBytesTheSameTextAndTheSameHash) {
   auto const values = this->values(400);
   for (auto const& a : values) {
      for (auto const& b : values) {
         bool const equal = a == b;
         ASSERT_EQ(std::memcmp(&a, &b, sizeof(a)) == 0, equal) << a << " and " << b;
         ASSERT_EQ(a.stringValue() == b.stringValue(), equal) << a << " and " << b;
         ASSERT_TRUE(!equal || std::hash<TypeParam>{}(a) == std::hash<TypeParam>{}(b));
      }
   }
}

TYPED_TEST(TextValueTest, OrderIsTotal) {
   auto const values = this->values(120);
   for (auto const& a : values) {
      for (auto const& b : values) {
         auto const order = a <=> b;
         ASSERT_EQ(order == 0, a == b) << a << " and " << b;
         ASSERT_EQ(order<0, (b <=> a)> 0) << a << " and " << b;
         for (auto const& c : values) {
            ASSERT_TRUE(!(order < 0 && b < c) || a < c) << a << " < " << b << " < " << c;
         }
      }
   }
}

// A table takes a few bits of the hash as its index: they must differ between values that differ.
TYPED_TEST(TextValueTest, HashesSpread) {
   std::set<TypeParam> distinct;
   for (auto const& value : this->values(4000)) {
      distinct.insert(value);
   }
   for (unsigned const shift : {0U, 52U}) {
      std::set<std::size_t> slots;
      for (auto const& value : distinct) {
         slots.insert(std::hash<TypeParam>{}(value) >> shift & 0xfffU);
      }
      double const expected = 4096 * (1 - std::exp(-static_cast<double>(distinct.size()) / 4096));
      EXPECT_GT(static_cast<double>(slots.size()), expected * 0.95) << distinct.size() << " values";
   }
}

// What a type makes of a text: the text of the value, or the error. The file has them as quoted strings.
template <class T>
std::string madeOf(std::string const& quoted) {
   try {
      return Zam::valueToStrep(T::parse(Zam::strepToValue<std::string>(quoted)).stringValue());
   } catch (Zam::ParseError const&) {
      return "malformed";
   } catch (Zam::RangeError const& error) {
      return error.what();
   }
}

template <class... T>
void expectTextForms(char const* section) {
   for (auto const& [text, made] : testsupport::casesOf("Lumen/textForms.txt", section)) {
      EXPECT_EQ(std::set<std::string>{madeOf<T>(text)...}, std::set{made}) << section << ": " << text;
   }
}

TEST(TextForms, AreReadInEveryFormAndWrittenInOne) {
   expectTextForms<Prefix, IpGenPrefix>("IPv4 prefixes");
   expectTextForms<Ip6Prefix, IpGenPrefix>("IPv6 prefixes");
   expectTextForms<IpAddrWithMask>("IPv4 addresses with a mask");
   expectTextForms<Ip6AddrWithMask>("IPv6 addresses with a mask");
   expectTextForms<IpAddr, Ip6Addr, Prefix, Ip6Prefix, IpGenPrefix, IpAddrWithMask, Ip6AddrWithMask, EthAddr>(
       "nothing");
   expectTextForms<EthAddr>("MAC addresses");
   expectTextForms<MplsLabel>("labels");
   expectTextForms<Vni>("VNIs");
   expectTextForms<MplsLabelOperation>("label operations");
   expectTextForms<IntfId>("interfaces");
   expectTextForms<RouteDistinguisher>("route distinguishers");
}

}  // namespace
}  // namespace Lumen::Test
