#include "SorterTesting.h"

#include "Zam/TypeRegistry.h"

namespace Kiv::Testing {

namespace {

// A sorter's life and output as a whole; what it selects is judged by SelectionOracleTest.
template <class Family>
class RouteSorterTest : public ::testing::Test {
 public:
   Box<Family> box_;
};
TYPED_TEST_SUITE(RouteSorterTest, Families);

TYPED_TEST(RouteSorterTest, protocolStringIsFiveColumns) {
   auto& box = this->box_;
   box.routeIs(TypeParam::nested[0], TypeParam::ospf);
   std::string const code = TypeParam::viasShareRouteLine ? "O" : "O3";
   auto const padded = [](std::string text) { return text.append(5 - text.size(), ' '); };
   auto const shown = [&](char const* prefix) { return box.sorter()->protocolString(box.prefix(prefix)).bytes(); };
   EXPECT_EQ(shown(TypeParam::nested[1]), "     ");
   box.hardwareUnprogrammedIs(TypeParam::nested[0]);
   box.kernelUnprogrammedIs(TypeParam::nested[0]);
   EXPECT_EQ(shown(TypeParam::nested[0]), padded("*" + code + "%"));
   box.inputs.kernelUnprogrammedRoute = nullptr;
   EXPECT_DEATH(shown(TypeParam::nested[0]), "kernelUnprogrammedRoute\\(\\)");
}

TYPED_TEST(RouteSorterTest, longestPrefixMatchBelongsToItsRequest) {
   auto& box = this->box_;
   constexpr char const* complaint = "!longerPrefixes\\(\\) && sortedRoutes\\(\\) <= 1";
   EXPECT_DEATH(box.sorter()->longestPrefixMatch(), complaint);
   box.inputs.prefix = box.prefix(TypeParam::everything);
   box.inputs.longerPrefixes = true;
   EXPECT_DEATH(box.sorter()->longestPrefixMatch(), complaint);
}

// Every table may be missing.
TYPED_TEST(RouteSorterTest, printsWithoutAnyTable) {
   typename TypeParam::Sorter::Inputs const nothing;
   testing_cliprint::CapturedFile file;
   auto const sorter = TypeParam::sorter(nothing);
   EXPECT_FALSE(sorter->initialized());
   sorter->handleInitialized();
   EXPECT_TRUE(sorter->printRoutes(static_cast<U32>(file.fd()), 2, false));
   EXPECT_EQ(file.text(),
             R"({"routingDisabled":true,"allRoutesProgrammedHardware":true,"allRoutesProgrammedKernel":true,)"
             R"("defaultRouteState":"notSet","routes":{}})"
             "\n");
}

// As the scripting layer does it: by name, with the inputs in their order.
TYPED_TEST(RouteSorterTest, isConstructedAndCalledByName) {
   registerTypes();
   registerTypes();
   auto& box = this->box_;
   box.routeIs(TypeParam::nested[0], TypeParam::ospf);
   auto const& type = *Zam::TypeRegistry::instance().type(TypeParam::sorterName);
   std::vector<std::any> arguments;
   Zam::forEachAttribute<typename TypeParam::Sorter::Inputs>(
       [&](auto const& at) { arguments.emplace_back(box.inputs.*at.member); });
   ASSERT_EQ(arguments.size(), 49U);
   auto const switchPlace = TypeParam::switchReducesLegend ? 45U : 33U;
   EXPECT_EQ(Zam::descriptionOf<typename TypeParam::Sorter::Inputs>.typeName, TypeParam::inputsName);
   arguments[switchPlace] = true;
   auto object = type.construct(arguments);
   EXPECT_TRUE(std::any_cast<bool>(type.attribute(object, TypeParam::switchName)));
   EXPECT_TRUE(std::any_cast<bool>(type.attribute(object, "initialized")));
   testing_cliprint::CapturedFile file;
   std::vector<std::any> const printArguments{static_cast<U32>(file.fd()), U32{1}, false};
   EXPECT_TRUE(std::any_cast<bool>(type.call(object, "printRoutes", printArguments)));
   EXPECT_NE(file.text().find(TypeParam::nested[0]), std::string::npos);
   arguments.pop_back();
   EXPECT_THROW(type.construct(arguments), Zam::TypeError);
}

TYPED_TEST(RouteSorterTest, anInterruptEndsTheOutputAndTheNextCommandWorks) {
   auto& box = this->box_;
   box.routeIs(TypeParam::nested[0], TypeParam::ospf);
   auto const sorter = box.sorter();
   testing_cliprint::CapturedFile file;
   cliprint::interruptedIs(true);
   ::testing::internal::CaptureStdout();
   EXPECT_FALSE(sorter->printRoutes(static_cast<U32>(file.fd()), 2, false));
   EXPECT_EQ(::testing::internal::GetCapturedStdout().rfind("exiting ", 0), 0U);
   EXPECT_EQ(file.text(), "");
   EXPECT_FALSE(cliprint::interrupted());
   EXPECT_TRUE(sorter->printRoutes(static_cast<U32>(file.fd()), 2, false));
   EXPECT_TRUE(testsupport::StrictJson::parse(file.text()));
}

}  // namespace

}  // namespace Kiv::Testing
