#pragma once

#include "Kiv/output/RouteLine.h"
#include "cliprint/RendererV2.h"

#include <algorithm>
#include <vector>

namespace Kiv {

struct FecRecording {
   RouteBody kind;
   cliprint::Recording recording;
};

// What routes with the same FEC print alike behind their prefix, preference and metric, kept to be written again. Only
// of FECs that several routes use, and neither of one nor of all too much.
class FecRecordings {
 public:
   // Vias by the hundred are printed anew each time.
   static constexpr std::size_t maxSize = 4096;
   static constexpr std::size_t maxSizeOfAll = std::size_t{16} << 20U;
   static constexpr std::size_t maxCount = 65'536;

   explicit FecRecordings(cliprint::RendererV2& renderer) : renderer_(renderer) {}

   // Null when there is none.
   FecRecording const* find(FecStore::Number fec) const noexcept {
      U32 const at = fec < ofFec_.size() ? ofFec_[fec] : 0;
      return at != 0 ? &recordings_[at - 1] : nullptr;
   }

   // Prints a body of that kind by print(), and records it when it is worth while. `indent` is that of the first line.
   template <class Print>
   void print(DisplayFec const& fec, RouteBody kind, std::size_t indent, Print const& print) {
      if (!fec.isShared() || recordings_.size() == maxCount || renderer_.recordedSize() >= maxSizeOfAll) {
         return print();
      }
      renderer_.startRecording(indent);
      print();
      if (cliprint::Recording recording; renderer_.endRecording(recording, maxSize)) {
         recordings_.push_back({kind, recording});
         ofFec_.resize(std::max<std::size_t>(ofFec_.size(), fec.number() + std::size_t{1}));
         ofFec_[fec.number()] = static_cast<U32>(recordings_.size());
      }
   }

 private:
   cliprint::RendererV2& renderer_;
   std::vector<U32> ofFec_;  // by number, one more than where it is
   std::vector<FecRecording> recordings_;
};

}  // namespace Kiv
