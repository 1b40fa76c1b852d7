#include "Zam/Dir.h"
#include "Zam/HashMap.h"
#include "Zam/TypeRegistry.h"
#include "support/Testing.h"

namespace TestTypes {

enum class Hue : U8 { red, green };
constexpr auto zamEnumerators(Hue) {
   return std::to_array<Zam::Enumerator<Hue>>({{Hue::red, "red"}, {Hue::green, "green"}});
}

struct Point : Zam::ValueType {
   S32 x = 0;
   Zam::BoundedString<4> name;
   Zam::HashMap<U32, Zam::String> notes;

   static constexpr auto zamDescription() {
      return Zam::describe<Point>("RegistryTest::Point", Zam::attribute("x", &Point::x),
                                  Zam::attribute("name", &Point::name), Zam::collection("notes", &Point::notes));
   }
   S32 moveBy(S32 distance) { return x += distance; }
   void paint(Hue) {}
};

struct Flag : Zam::ValueType {
   bool on = false;
   static constexpr auto zamDescription() {
      return Zam::describe<Flag>("RegistryTest::Flag", Zam::attribute("on", &Flag::on));
   }
};

class Base : public Zam::PtrInterface {
 public:
   std::string_view fwkType() const noexcept override { return "RegistryTest::Base"; }
   Zam::String const& name() const { return name_; }
   void nameIs(Zam::String const& name) { name_ = name; }

 private:
   Zam::String name_;
};

class Walker : public Base {
 public:
   Walker(Zam::Ptr<Base const> table, U8 limit) : table_(std::move(table)), limit_(limit) {}
   std::string_view fwkType() const noexcept override { return "RegistryTest::Walker"; }
   void handleInitialized() { initialized_ = true; }
   bool initialized() const noexcept { return initialized_; }
   Zam::Ptr<Base const> table() const { return table_; }
   U8 limit() const { return limit_; }
   void adopt(Zam::Ptr<Base> const& other) { table_ = other; }
   // Floating point, and values and views, as arguments and result.
   std::string_view text(double factor, Point const& point) const {
      return text_ = Zam::valueToStrep(factor * point.x);
   }

 private:
   Zam::Ptr<Base const> table_;
   U8 limit_;
   bool initialized_ = false;
   mutable std::string text_;
};

Zam::Ptr<Base> baseFactory() {
   return Zam::makePtr<Base>();
}
Zam::Ptr<Walker> walkerFactory(Zam::Ptr<Base const> const& table, U8 limit) {
   return Zam::makePtr<Walker>(table, limit);
}
S64 twice(S64 number) {
   return 2 * number;
}

void registerTypes() {
   auto& registry = Zam::TypeRegistry::instance();
   registry.value<Point>().operation("moveBy", &Point::moveBy).operation("paint", &Point::paint);
   registry.enumeration<Hue>("RegistryTest::Hue");
   registry.value<Flag>();
   registry.entity<Base>("RegistryTest::Base").constructor(&baseFactory).attribute("name", &Base::name, &Base::nameIs);
   registry.entity<Walker>("RegistryTest::Walker")
       .constructor(&walkerFactory, {"", {"table", "limit"}})
       .attribute("name", &Walker::name, &Walker::nameIs)
       .attribute("initialized", &Walker::initialized)
       .attribute("table", &Walker::table)
       .attribute("limit", &Walker::limit)
       .operation("adopt", &Walker::adopt)
       .operation("text", &Walker::text)
       .operation("twice", &twice);
}

}  // namespace TestTypes

namespace {

using namespace TestTypes;
using Args = std::vector<std::any>;

class Registry : public testing::Test {
 protected:
   // Twice: the second time changes nothing.
   static void SetUpTestSuite() {
      registerTypes();
      registerTypes();
   }

   static Zam::TypeInfo const& type(std::string_view name) { return *Zam::TypeRegistry::instance().type(name); }
   Zam::TypeInfo const& point = type("RegistryTest::Point");
   Zam::TypeInfo const& base = type("RegistryTest::Base");
   Zam::TypeInfo const& walker = type("RegistryTest::Walker");
};

TEST_F(Registry, ValuesAreMadeReadAndChangedByName) {
   auto object = point.construct();
   EXPECT_FALSE(point.isSet(object));
   auto const other = point.construct(Args{7L, "abc", Zam::HashMap<U32, Zam::String>()});
   point.attributeIs(object, "x", U8{7});
   point.attributeIs(object, "name", Zam::fromText("'abc'"));
   EXPECT_TRUE(point.equal(object, other));
   EXPECT_EQ(point.hash(object), point.hash(other));
   EXPECT_EQ(std::any_cast<S32>(point.attribute(object, "x")), 7);
   EXPECT_EQ(std::any_cast<S32>(point.call(object, "moveBy", Args{-9})), -2);
   EXPECT_EQ(point.toText(object), "Value('RegistryTest::Point', ** {'x': -2, 'name': 'abc', 'notes': None})");
   auto const& flag = type("RegistryTest::Flag");
   EXPECT_TRUE(flag.isSet(flag.construct(Args{Zam::fromText("Value('RegistryTest::Flag', ** {'on': True})")})));
   auto const wrong = [&] { flag.construct(Args{Zam::fromText("Value('RegistryTest::Flag', ** {'on': 1})")}); };
   EXPECT_EQ(testsupport::complaintOf<Zam::ParseError>(wrong), "expected True or False, found \"1})\" at 38");
}

TEST_F(Registry, CollectionsOfferTheirOperations) {
   auto object = point.construct();
   point.call(object, "notesIs", Args{5, "five"});
   point.call(object, "notesIs", Args{6, std::string("six")});
   EXPECT_EQ(std::any_cast<Zam::String>(point.call(object, "notes", Args{5})), Zam::String("five"));
   EXPECT_FALSE(point.call(object, "notes", Args{4}).has_value());
   auto const view = point.collection(object, "notes");
   auto other = point.construct();
   point.attributeIs(other, "notes", view);
   EXPECT_TRUE(point.equal(other, object));
   EXPECT_THROW(point.attributeIs(other, "notes", Zam::CollectionView::owning(std::set<U32>())), Zam::TypeError);
   point.call(object, "notesDel", Args{5});
   EXPECT_EQ(view.size(), 1U) << "it looks at the object";
   EXPECT_EQ((std::any_cast<Zam::HashMap<U32, Zam::String>>(point.attribute(object, "notes")).size()), 1U);
   point.call(object, "notesDelAll");
   EXPECT_FALSE(point.isSet(object));
}

TEST_F(Registry, EntitiesComeInitialisedAndAreComparedByIdentity) {
   auto table = base.construct();
   base.attributeIs(table, "name", "routes");
   auto const before = walker.allocations();
   auto object = walker.construct(Args{table, 200});
   EXPECT_EQ(walker.allocations(), before + 1);
   EXPECT_TRUE(std::any_cast<bool>(walker.attribute(object, "initialized")));
   EXPECT_EQ(std::any_cast<Zam::Ptr<Base const>>(walker.attribute(object, "table"))->name(), Zam::String("routes"));
   EXPECT_EQ(std::any_cast<Zam::String>(walker.call(object, "text", Args{2, Point{{}, 3, "", {}}})), "6.0");
   EXPECT_EQ(std::any_cast<S64>(walker.call("twice", Args{21})), 42);
   EXPECT_EQ(walker.toText(object), "Ptr('RegistryTest::Walker')");
   EXPECT_TRUE(walker.equal(object, std::any(object)));
   EXPECT_FALSE(walker.equal(object, walker.construct(Args{nullptr, 200})) || walker.isSet(Zam::Ptr<Walker>()));
   EXPECT_EQ(walker.toText(Zam::Ptr<Walker>()), "None");
}

TEST_F(Registry, HandlesConvertUpAndToConstOnly) {
   auto const object = std::any_cast<Zam::Ptr<Walker>>(walker.construct(Args{nullptr, 1}));
   std::any const asInterface = Zam::Ptr<Zam::PtrInterface>(object);
   std::any target = object;
   for (std::any const& argument : {std::any(object), asInterface, std::any(Zam::Ptr<Base>(object))}) {
      walker.call(target, "adopt", Args{argument});
      EXPECT_EQ(object->table(), object);
   }
   object->adopt(nullptr);
   for (std::any const& argument : {std::any(Zam::Ptr<Base const>(object)), std::any(Zam::Ptr<Walker const>(object)),
                                    std::any(Zam::Ptr<Zam::PtrInterface const>(object)), std::any(), std::any(0),
                                    std::any(Zam::Ptr<Zam::PtrInterface>(Zam::makePtr<Zam::Dir<Base>>()))}) {
      EXPECT_THROW(walker.call(target, "adopt", Args{argument}), Zam::TypeError);
   }
   // A base handle serves as the object when it holds one, a constant one for reading only.
   EXPECT_EQ(std::any_cast<U8>(walker.attribute(asInterface, "limit")), 1);
   std::any constant = Zam::Ptr<Walker const>(object);
   EXPECT_EQ(std::any_cast<U8>(walker.attribute(constant, "limit")), 1);
   EXPECT_EQ(testsupport::complaintOf<Zam::TypeError>([&] { walker.attributeIs(constant, "name", "x"); }),
             "RegistryTest::Walker.name: the object is constant");
   std::any derived = object;
   base.attributeIs(derived, "name", "through the base");
   EXPECT_EQ(object->name(), Zam::String("through the base"));
   EXPECT_THROW(walker.attribute(std::any(Zam::Ptr<Base>(Zam::makePtr<Base>())), "limit"), Zam::TypeError);
}

TEST_F(Registry, IntegersConvertWithTheirRange) {
   auto const limit = [this](std::any const& argument) {
      return std::any_cast<U8>(walker.attribute(walker.construct(Args{nullptr, argument}), "limit"));
   };
   EXPECT_EQ(limit(255LL), 255);
   EXPECT_EQ(limit(short{7}), 7);
   for (std::any const& beyond : {std::any(256), std::any(-1), std::any(std::numeric_limits<U64>::max()),
                                  std::any(std::numeric_limits<S64>::min()), std::any((U64{1} << 32U) + 5)}) {
      EXPECT_THROW(limit(beyond), Zam::RangeError);
   }
   for (std::any const& wrong : {std::any(true), std::any(1.0), std::any('a'), std::any("1"), std::any()}) {
      EXPECT_THROW(limit(wrong), Zam::TypeError);
   }
   EXPECT_EQ(std::any_cast<S64>(walker.call("twice", Args{Zam::fromText("-3")})), -6);
   EXPECT_THROW(walker.call("twice", Args{std::numeric_limits<U64>::max()}), Zam::RangeError);
   auto object = point.construct();
   EXPECT_THROW(point.attributeIs(object, "name", "too long"), Zam::RangeError);
}

TEST_F(Registry, ErrorsSayWhatIsWrong) {
   auto object = point.construct();
   std::pair<std::function<void()>, std::string> const cases[] = {
       {[&] { point.attribute(object, "z"); }, "Point.z: no such attribute"},
       {[&] { point.attributeIs(object, "z", 1); }, "Point.z: no such settable attribute"},
       {[&] { point.call(object, "fly"); }, "Point.fly: no such operation"},
       {[&] { point.call(object, "moveBy"); }, "Point.moveBy: takes 1 arguments, not 0"},
       {[&] { point.call("moveBy", Args{1}); }, "Point.moveBy: needs an object"},
       {[&] { point.construct(Args{1}); }, "Point.constructor: takes 0 or 3 arguments, not 1"},
       {[&] {
           walker.construct(Args{nullptr, "x"});
        },
        "Walker.constructor: argument limit: expected U8, found text 'x'"},
       {[&] {
           walker.construct(Args{Point(), 1});
        },
        "Walker.constructor: argument table: expected RegistryTest::Base, found RegistryTest::Point"},
       {[&] { point.attributeIs(object, "name", {}); },
        "Point.name: argument 0: expected Zam::BoundedString<4u>, found nothing"},
       {[&] { point.call(object, "paint", Args{7}); },
        "Point.paint: argument 0: expected an enumerator of RegistryTest::Hue, found S32"},
       {[&] { point.call(object, "paint", Args{Zam::fromText("1")}); },
        "Point.paint: argument 0: expected an enumerator of RegistryTest::Hue, found \"1\""},
       {[&] { point.collection(object, "x"); }, "Point.x: no such collection"},
       {[&] { walker.attribute(object, "limit"); }, "Walker.limit: the object is of type RegistryTest::Point"},
       {[&] { walker.attribute(Zam::Ptr<Walker>(), "limit"); }, "Walker.limit: the object is null"},
       {[&] { point.toText(1); }, "Point.toText: the object is of type S32"},
   };
   for (auto const& [use, message] : cases) {
      EXPECT_EQ(testsupport::complaintOf<std::exception>(use), "RegistryTest::" + message);
   }
}

}  // namespace
