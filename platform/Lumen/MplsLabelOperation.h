#pragma once

#include "Lumen/MplsLabel.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>

namespace Lumen {

// What a via does to a packet's label stack: pushes labels, swaps the top label for others, or pops it. The first
// label is the outermost, on top of the stack. At most maxLabels, a RangeError beyond. The default does nothing.
// Texts: "none", "push 100 200", "swap 300", "pop". Orders by operation, then by labels, the shorter stack first.
class KIV_EXPORT MplsLabelOperation {
 public:
   enum class Operation : U8 { none = 0, push = 1, swap = 2, pop = 3 };

   static constexpr std::size_t maxLabels = 16;
   static constexpr std::size_t maxTextLength = 4 + maxLabels * (1 + MplsLabel::maxTextLength);

   constexpr MplsLabelOperation() noexcept = default;
   MplsLabelOperation(Operation operation, std::span<MplsLabel const> labels);
   MplsLabelOperation(Operation operation, std::initializer_list<MplsLabel> labels)
       : MplsLabelOperation(operation, std::span<MplsLabel const>(labels.begin(), labels.size())) {}

   Operation operation() const noexcept { return operation_; }
   // Outermost first; lives as long as this value.
   std::span<MplsLabel const> labels() const noexcept { return std::span(labels_).first(stackSize()); }
   std::size_t stackSize() const noexcept { return std::min<std::size_t>(size_, maxLabels); }

   void operationIs(Operation operation) noexcept { operation_ = operation; }
   // Adds a label at the bottom of the stack.
   void labelAppend(MplsLabel label);

   bool operator==(MplsLabelOperation const&) const noexcept = default;
   std::strong_ordering operator<=>(MplsLabelOperation const& other) const noexcept;

   static MplsLabelOperation parse(std::string_view text);
   std::size_t formatTo(char* out) const noexcept;
   std::string stringValue() const { return textOf(*this); }
   std::size_t hashValue() const noexcept;

 private:
   Operation operation_ = Operation::none;
   U8 size_ = 0;
   std::array<U8, 2> zero_{};                 // no padding bytes: stacks are copied into shared memory
   std::array<MplsLabel, maxLabels> labels_;  // unused ones are noLabel
};

static_assert(sizeof(MplsLabelOperation) == 68 && std::is_trivially_copyable_v<MplsLabelOperation>);
static_assert(std::has_unique_object_representations_v<MplsLabelOperation>);

}  // namespace Lumen
