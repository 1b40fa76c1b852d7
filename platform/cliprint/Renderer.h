#pragma once

#include "Zam/Export.h"
#include "Zam/Int.h"
#include "Zam/Ptr.h"

namespace cliprint {

// The format of an output as commands carry it: 1 or 2. A renderer takes any other number too and writes nothing for
// it; the attributes refuse it.
using OutputFormat = U32;
inline constexpr OutputFormat textFormat = 1;
inline constexpr OutputFormat modelFormat = 2;

// What attributes need to know of the renderer they are made for.
class KIV_EXPORT Renderer : public Zam::PtrInterface {
 public:
   ~Renderer() override;

   OutputFormat outputFormat() const noexcept { return outputFormat_; }
   bool isText() const noexcept { return outputFormat_ == textFormat; }
   bool isModel() const noexcept { return outputFormat_ == modelFormat; }

 protected:
   explicit Renderer(OutputFormat format) noexcept : outputFormat_(format) {}

 private:
   OutputFormat outputFormat_;
};

}  // namespace cliprint
