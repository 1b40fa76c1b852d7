#include "SorterTesting.h"

#include "Zam/TypeRegistry.h"

#include <fcntl.h>
#include <unistd.h>

namespace Kiv::Testing {

namespace {

template <class Family>
class RouteSorterTest : public ::testing::Test {
 public:
   Box<Family> box_;

   using Prefixes = std::vector<std::string>;
   void nestedRoutesAre() {
      for (auto const* const prefix : {Family::elsewhere, Family::nested[2], Family::nested[0], Family::nested[1]}) {
         box_.routeIs(prefix, Family::ospf);
      }
   }
};
TYPED_TEST_SUITE(RouteSorterTest, Families);

TYPED_TEST(RouteSorterTest, wholeTableInPrefixOrder) {
   this->nestedRoutesAre();
   auto const& n = TypeParam::nested;
   EXPECT_EQ(this->box_.selected(), (std::vector<std::string>{n[0], n[1], n[2], TypeParam::elsewhere}));
   EXPECT_EQ(this->box_.sorter()->selectedRoutes(), 4U);
}

TYPED_TEST(RouteSorterTest, longerPrefixesIncludeThePrefixItself) {
   this->nestedRoutesAre();
   this->box_.inputs.prefix = this->box_.prefix(TypeParam::nested[1]);
   this->box_.inputs.longerPrefixes = true;
   EXPECT_EQ(this->box_.selected(), (std::vector<std::string>{TypeParam::nested[1], TypeParam::nested[2]}));
}

TYPED_TEST(RouteSorterTest, longestMatchPassesOverWhatTheFilterHides) {
   this->nestedRoutesAre();
   auto& box = this->box_;
   box.inputs.prefix = box.prefix(TypeParam::inNested);
   EXPECT_EQ(box.sorter()->longestPrefixMatch(), box.prefix(TypeParam::nested[2]));
   box.routeIs(TypeParam::nested[2], TypeParam::RouteType::martian);
   EXPECT_EQ(box.sorter()->longestPrefixMatch(), box.prefix(TypeParam::nested[1]));
   box.inputs.showHidden = true;
   EXPECT_EQ(box.sorter()->longestPrefixMatch(), box.prefix(TypeParam::nested[2]));
   box.inputs.protocol = "S";
   EXPECT_TRUE(box.sorter()->longestPrefixMatch().isNullPrefix());
}

TYPED_TEST(RouteSorterTest, hidesWhatHasNothingToShow) {
   auto& box = this->box_;
   auto const fec = box.fecIs(2, {box.via("", "Ethernet1")});
   auto const invalid = box.fecIs(3, {box.via(TypeParam::hop, "")});
   using RouteType = typename TypeParam::RouteType;
   box.routeIs(TypeParam::nested[0], RouteType::unknown, fec);
   box.routeIs(TypeParam::nested[1], RouteType::attached, fec);
   box.routeIs(TypeParam::nested[2], RouteType::staticConfig, {});       // no FEC
   box.routeIs(TypeParam::elsewhere, RouteType::staticConfig, invalid);  // no via with an interface
   box.routeIs(TypeParam::inNested, static_cast<RouteType>(200), fec);   // a type that there is not
   EXPECT_TRUE(box.selected().empty());
   box.inputs.showHidden = true;
   EXPECT_EQ(box.selected(), std::vector<std::string>{TypeParam::elsewhere});
   box.routeIs(TypeParam::nested[1], RouteType::nexthopGroup, {});
   box.routeIs(TypeParam::nested[2], RouteType::staticConfig, box.fecIdOf(99));  // a FEC that has vanished
   EXPECT_EQ(box.selected(),
             (std::vector<std::string>{TypeParam::nested[1], TypeParam::nested[2], TypeParam::elsewhere}));
}

// The box's own prefixes are shown when they are an interface's, in the sorter's VRF.
TYPED_TEST(RouteSorterTest, receiveRoutesAreShownForInterfaceAddressesOnly) {
   auto& box = this->box_;
   auto const fec = box.fecIs(1, {box.via("", "Loopback0")});
   box.routeIs(TypeParam::inNested, TypeParam::RouteType::receive, fec);
   EXPECT_TRUE(box.selected().empty());
   box.interfaceIs("Loopback0", TypeParam::inNested, false, "red");
   EXPECT_TRUE(box.selected().empty());
   box.interfaceIs("Loopback0", TypeParam::inNested);
   EXPECT_EQ(box.selected(), std::vector<std::string>{TypeParam::inNested});
}

TEST(RouteSorter4Test, loopbackPrefixesAreShownWhateverTheirMask) {
   Box<V4> box;
   auto const fec = box.fecIs(1, {Box<V4>::via("", "Loopback0")});
   auto const route = box.routeIs("10.1.1.0/24", V4::RouteType::receive, fec);
   box.interfaceIs("Loopback0", "10.1.1.1/24");
   EXPECT_TRUE(box.selected().empty());
   box.interfaceIs("Loopback0", "10.1.1.1/24", true);
   EXPECT_EQ(box.selected(), std::vector<std::string>{"10.1.1.0/24"});
   box.leakedRouteIs(route, 8);
   EXPECT_TRUE(box.selected().empty()) << "it is another VRF's";
}

TEST(RouteSorter6Test, linkLocalIsShownWithTheHidden) {
   Box<V6> box;
   box.routeIs("fe80::/10", V6::RouteType::receive);
   EXPECT_TRUE(box.selected().empty());
   box.inputs.showHidden = true;
   EXPECT_EQ(box.selected(), std::vector<std::string>{"fe80::/10"});
}

TYPED_TEST(RouteSorterTest, protocolStringIsFiveColumns) {
   auto& box = this->box_;
   box.routeIs(TypeParam::nested[0], TypeParam::ospf);
   auto const code = std::string(TypeParam::ospfCode);
   auto const padded = [](std::string text) { return text.append(5 - text.size(), ' '); };
   auto const shown = [&](char const* prefix) {
      return std::string(box.sorter()->protocolString(box.prefix(prefix)).bytes());
   };
   EXPECT_EQ(shown(TypeParam::elsewhere), "     ");
   EXPECT_EQ(shown(TypeParam::nested[0]), padded(" " + code));
   box.hardwareUnprogrammedIs(TypeParam::nested[0]);
   box.kernelUnprogrammedIs(TypeParam::nested[0]);
   EXPECT_EQ(shown(TypeParam::nested[0]), padded("*" + code + "%"));
   box.inputs.kernelUnprogrammedRoute = nullptr;
   EXPECT_DEATH(shown(TypeParam::nested[0]), "kernelUnprogrammedRoute\\(\\)");
}

TYPED_TEST(RouteSorterTest, longestPrefixMatchBelongsToItsRequest) {
   EXPECT_DEATH(this->box_.sorter()->longestPrefixMatch(), "sortedRoutes\\(\\) <= 1");
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
   EXPECT_EQ(std::any_cast<U32>(type.attribute(object, "sortedRoutes")), 1U);
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

// The reader takes a little, then the user interrupts: what was open stays open, and nothing more comes.
TYPED_TEST(RouteSorterTest, anInterruptDuringTheWalkCutsTheOutputOff) {
   auto& box = this->box_;
   box.manyRoutesAre(4000);
   auto const sorter = box.sorter();
   int ends[2];
   ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
   std::string taken;
   std::thread reader([&] {
      char piece[4096];
      for (ssize_t got = 0; (got = ::read(ends[0], piece, sizeof(piece))) > 0;) {
         cliprint::interruptedIs(true);
         taken.append(piece, static_cast<std::size_t>(got));
      }
   });
   ::testing::internal::CaptureStdout();
   EXPECT_FALSE(sorter->printRoutes(static_cast<U32>(ends[1]), 2, false));
   EXPECT_EQ(::testing::internal::GetCapturedStdout(),
             "exiting " + std::string(cliprint::SigIntException().what()) + "\n");
   ::close(ends[1]);
   reader.join();
   ::close(ends[0]);
   cliprint::resetInterrupted();
   EXPECT_EQ(taken.rfind("{\"routingDisabled\"", 0), 0U);
   EXPECT_FALSE(testsupport::StrictJson::parse(taken));
   EXPECT_EQ(sorter->outputError(), 0);
}

TYPED_TEST(RouteSorterTest, aFullDiskEndsTheOutputWithItsError) {
   int const full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
   ASSERT_GE(full, 0);
   auto const sorter = this->box_.sorter();
   EXPECT_FALSE(sorter->printRoutes(static_cast<U32>(full), 1, false));
   EXPECT_EQ(sorter->outputError(), ENOSPC);
   ::close(full);
}

}  // namespace

}  // namespace Kiv::Testing
