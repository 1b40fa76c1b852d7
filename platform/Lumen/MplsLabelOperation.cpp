#include "Lumen/MplsLabelOperation.h"

#include "Lumen/TextCursor.h"
#include "Lumen/TextDigits.h"
#include "Zam/Hash.h"

#include <algorithm>

namespace Lumen {
namespace {

using Operation = MplsLabelOperation::Operation;

// By the operation's number.
constexpr std::array<std::string_view, 4> operationTexts{"none", "push", "swap", "pop"};

Operation operationOf(std::string_view word) {
   auto const found = std::ranges::find(operationTexts, word);
   if (found == operationTexts.end()) {
      throw Zam::ParseError("none, push, swap or pop", word);
   }
   return static_cast<Operation>(found - operationTexts.begin());
}

}  // namespace

MplsLabelOperation::MplsLabelOperation(Operation operation, std::span<MplsLabel const> labels) : operation_(operation) {
   std::ranges::for_each(labels, [this](MplsLabel label) { labelAppend(label); });
}

void MplsLabelOperation::labelAppend(MplsLabel label) {
   if (size_ == maxLabels) {
      throw Zam::RangeError("Lumen::MplsLabelOperation::stackSize > maxLabels not allowed");
   }
   labels_[size_++] = label;
}

std::strong_ordering MplsLabelOperation::operator<=>(MplsLabelOperation const& other) const noexcept {
   if (operation_ != other.operation_) {
      return operation_ <=> other.operation_;
   }
   auto const mine = labels();
   auto const others = other.labels();
   return std::lexicographical_compare_three_way(mine.begin(), mine.end(), others.begin(), others.end());
}

MplsLabelOperation MplsLabelOperation::parse(std::string_view text) {
   auto const word = text.substr(0, text.find(' '));
   MplsLabelOperation result(operationOf(word), {});
   TextCursor in(text.substr(word.size()));
   while (!in.atEnd()) {
      MplsLabel label;
      if (!in.accept(' ') || !MplsLabel::read(in, label)) {
         throw Zam::ParseError("MPLS labels with single blanks between them", text);
      }
      result.labelAppend(label);
   }
   return result;
}

std::size_t MplsLabelOperation::formatTo(char* out) const noexcept {
   auto const operation = static_cast<std::size_t>(operation_);
   char* at = formatText(out, operation < operationTexts.size() ? operationTexts[operation] : "");
   for (MplsLabel const label : labels()) {
      *at++ = ' ';
      at += label.formatTo(at);
   }
   return static_cast<std::size_t>(at - out);
}

std::size_t MplsLabelOperation::hashValue() const noexcept {
   std::size_t hash = static_cast<std::size_t>(operation_);
   for (MplsLabel const label : labels()) {
      hash = Zam::combinedHash(hash, std::size_t{label.value()});
   }
   return Zam::mixedHash(hash);
}

}  // namespace Lumen
