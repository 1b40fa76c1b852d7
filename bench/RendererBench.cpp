// What one route line costs: flags, code, prefix, preference, metric, next hop and interface, in text and in the model,
// beside the same text by snprintf.
#include "cliprint/JsonScope.h"
#include "cliprint/RendererV2.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace {

struct RouteLine {
   bool hardwareProgrammed;
   std::string_view code;
   std::string_view word;
   std::string prefix;
   S32 preference;
   U32 metric;
   std::string nexthop;
   std::string interface;
};

RouteLine const route{true, "O E2", "ospfExternalType2", "192.168.137.128/25",
                      110,  20,     "172.16.255.254",    "Ethernet31/1"};

class FlagAttrInfo : public cliprint::BoolAttrInfo {
 public:
   using BoolAttrInfo::BoolAttrInfo;
   void setValue(bool value) { flagIs(value, " ", "*", {"bench", "setValue"}); }
};

class CodeAttrInfo : public cliprint::StringAttrInfo {
 public:
   using StringAttrInfo::StringAttrInfo;
   void setValue(RouteLine const& line) { constantIs(line.code, line.word, {"bench", "setValue"}); }
};

void printLine(cliprint::RendererV2& renderer, RouteLine const& line) {
   cliprint::StringAttrInfo const prefix("prefix", renderer, line.prefix);
   auto const entry = cliprint::JsonScope::dictEntry(renderer, prefix);
   FlagAttrInfo hardware("hardwareProgrammed", renderer);
   hardware.setValue(line.hardwareProgrammed);
   CodeAttrInfo code("routeType", renderer);
   code.setValue(line);
   renderer.addAttributes("%s%s", hardware.getArg(), code.getArg());
   renderer.addFrills("%*s%s", static_cast<int>(8 - line.code.size()), "", line.prefix);
   cliprint::BoolAttrInfo const connected("directlyConnected", renderer, false);
   renderer.addAttributes("", connected.getArg());
   cliprint::S32AttrInfo const preference("preference", renderer, line.preference);
   cliprint::Attr32Info const metric("metric", renderer, line.metric);
   renderer.addAttributes(" [%d/%u] ", preference.getArg(), metric.getArg());
   renderer.addFrills("via");
   cliprint::StringAttrInfo const nexthop("nexthopAddr", renderer, line.nexthop);
   renderer.addAttributes(" %s", nexthop.getArg());
   cliprint::StringAttrInfo const interface("interface", renderer, line.interface);
   renderer.addAttributes(", %s", interface.getArg());
   renderer.addFrills("\n");
   if (renderer.fullness() > 66) {
      renderer.ioflush();
   }
}

void routeLine(benchmark::State& state) {
   int const fd = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
   cliprint::CliPrintBuffer buffer(fd);
   cliprint::RendererV2 renderer(static_cast<U32>(state.range(0)), buffer, true);
   for (auto _ : state) {
      printLine(renderer, route);
   }
   state.SetItemsProcessed(state.iterations());
   ::close(fd);
}
BENCHMARK(routeLine)->ArgName("format")->Arg(cliprint::textFormat)->Arg(cliprint::modelFormat);

void routeLineBySnprintf(benchmark::State& state) {
   std::string text(1024, '\0');
   for (auto _ : state) {
      int const length = std::snprintf(text.data(), text.size(), "%s%s%*s%s [%d/%u] via %s, %s\n",
                                       route.hardwareProgrammed ? " " : "*", route.code.data(),
                                       static_cast<int>(8 - route.code.size()), "", route.prefix.c_str(),
                                       route.preference, route.metric, route.nexthop.c_str(), route.interface.c_str());
      benchmark::DoNotOptimize(length);
      benchmark::ClobberMemory();
   }
}
BENCHMARK(routeLineBySnprintf);

// A whole table to a pipe-like sink, by size of the print buffer.
void tableByBufferSize(benchmark::State& state) {
   int const fd = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
   for (auto _ : state) {
      cliprint::CliPrintBuffer buffer(fd, static_cast<std::size_t>(state.range(0)));
      cliprint::RendererV2 renderer(cliprint::textFormat, buffer, true);
      for (int i = 0; i < 10000; ++i) {
         printLine(renderer, route);
      }
      renderer.ioflush();
   }
   ::close(fd);
   state.SetItemsProcessed(state.iterations() * 10000);
}
BENCHMARK(tableByBufferSize)->RangeMultiplier(4)->Range(4 << 10, 1 << 20);

// Escaping: text that stands for itself, and text that does not.
void quotedText(benchmark::State& state, std::string_view text) {
   int const fd = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
   cliprint::CliPrintBuffer buffer(fd);
   for (auto _ : state) {
      cliprint::jsonAppend(buffer, text);
   }
   state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
   ::close(fd);
}
BENCHMARK_CAPTURE(quotedText, clean,
                  std::string_view("uplink to the spine switch of the second row, rack 12, port 31"));
BENCHMARK_CAPTURE(quotedText, escaped,
                  std::string_view("\"up\"link\tto\\the spine swit\xc3\xa9 of the second row,\n r\xff"
                                   "ck"));

}  // namespace
