#include "FlexCounters/CounterTable.h"

namespace FlexCounters {

namespace {

std::string tablePath(std::string_view kind, FeatureId featureId, U32 unit) {
   return "flexCounters/" + std::string(kind) + "/" + stringValue(featureId) + "/" + std::to_string(unit);
}

}  // namespace

std::string counterTablePath(FeatureId featureId, U32 unit) {
   return tablePath("counterTable", featureId, unit);
}

std::string snapshotTablePath(FeatureId featureId, U32 unit) {
   return tablePath("snapshotTable", featureId, unit);
}

CounterTable::CounterTable(std::string path) : BasicCounterTable(std::move(path)) {}

std::string_view CounterTable::fwkType() const noexcept {
   return "FlexCounters::CounterTable";
}

CounterTableWriter::CounterTableWriter(std::string path) : BasicCounterTable(std::move(path)) {}

CounterTableWriter::CounterTableWriter(std::string path, Vault::TableFile::Sizes sizes)
    : BasicCounterTable(std::move(path), sizes) {}

std::string_view CounterTableWriter::fwkType() const noexcept {
   return "FlexCounters::CounterTableWriter";
}

void CounterTableWriter::counterIs(U64 counterIndex, Counter const& counter) {
   core_.recordIs({.key = {counterIndex}, .packets = counter.packets, .bytes = counter.bytes});
}

bool CounterTableWriter::counterDel(U64 counterIndex) {
   return core_.recordDel({counterIndex});
}

}  // namespace FlexCounters
