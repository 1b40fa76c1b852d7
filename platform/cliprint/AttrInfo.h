#pragma once

#include "Zam/Error.h"
#include "Zam/Export.h"
#include "Zam/Int.h"
#include "cliprint/Format.h"
#include "cliprint/Renderer.h"

#include <bit>
#include <concepts>
#include <cstddef>
#include <string_view>

// Attributes: named values that are in both outputs, each made on the stack for one emission:
//
//    S32AttrInfo preference("preference", renderer, route.preference);
//    Attr32Info metric("metric", renderer, route.metric);
//    renderer.addAttributes(" [%d/%u] ", preference.getArg(), metric.getArg());
//
// Text output prints getArg() through the format; model output writes the value under the attribute's name, as the kind
// of value that the attribute's type says. getArg() of an attribute without a value fails the assertion "hasValue";
// what it returns is good for as long as the attribute is.
namespace cliprint {

// A model key: a literal that needs no escaping, which the compiler checks.
class AttrName {
 public:
   template <std::size_t Size>
   consteval AttrName(char const (&name)[Size]) : name_(name, Size - 1) {  // NOLINT(google-explicit-constructor)
      if (Size - 1 > maxLength) {
         nameIsTooLong();
      }
      for (char const c : name_) {
         if (c < ' ' || c > '~' || c == '"' || c == '\\') {
            nameNeedsEscaping();
         }
      }
   }
   constexpr operator std::string_view() const noexcept { return name_; }  // NOLINT(google-explicit-constructor)

   static constexpr std::size_t maxLength = 200;

 private:
   // Never defined: naming them in a constant expression stops the compiler.
   static void nameIsTooLong();
   static void nameNeedsEscaping();

   std::string_view name_;
};

// What getArg() returns, one type per kind of value: the attribute's name and its value, ready for either output.
struct TextArg {
   std::string_view name;
   std::string_view value;
   std::string_view textValue() const noexcept { return value; }
};
struct BoolArg {
   std::string_view name;
   std::string_view text;
   bool value;
   std::string_view textValue() const noexcept { return text; }
};
template <class Number>
struct NumberArg {
   std::string_view name;
   Number value;
   Number textValue() const noexcept { return value; }
};

// Where an assertion of an attribute class says that it failed.
struct AssertSite {
   char const* source;
   char const* function;
};

class KIV_EXPORT AttrInfo {
 public:
   AttrInfo(AttrInfo const&) = delete;
   AttrInfo& operator=(AttrInfo const&) = delete;

   std::string_view name() const noexcept { return name_; }
   U8 kind() const noexcept { return kind_; }
   bool hasValue() const noexcept { return hasValue_; }
   OutputFormat outputFormat() const noexcept { return outputFormat_; }
   // Takes the value away.
   void reset() noexcept { hasValue_ = false; }

 protected:
   AttrInfo(AttrName name, Renderer const& renderer) noexcept : name_(name), outputFormat_(renderer.outputFormat()) {}
   ~AttrInfo() = default;

   static constexpr char const* source = "cliprint/AttrInfo";

   void hasValueIs(bool hasValue) noexcept { hasValue_ = hasValue; }
   void assertHasValue() const { Zam::assertThat(hasValue_, "hasValue", source); }
   // There are two formats; the value that belongs to this attribute's.
   template <class T>
   T byFormat(T text, T model, AssertSite const& site) const {
      Zam::assertThat(outputFormat_ == textFormat || outputFormat_ == modelFormat, "0", site.source, site.function);
      return outputFormat_ == textFormat ? text : model;
   }

 private:
   std::string_view name_;
   U8 kind_ = 1;
   bool hasValue_ = false;
   OutputFormat outputFormat_;
};

// An unsigned integer of 32 bits, and the base of those whose value is no wider or a text.
class Attr32Info : public AttrInfo {
 public:
   Attr32Info(AttrName name, Renderer const& renderer) noexcept : AttrInfo(name, renderer) {}
   template <std::unsigned_integral Value>
   Attr32Info(AttrName name, Renderer const& renderer, Value value) noexcept : AttrInfo(name, renderer) {
      setValue(value);
   }

   template <std::unsigned_integral Value>
   requires(sizeof(Value) <= sizeof(U32)) void setValue(Value value) noexcept { rawIs(value); }
   NumberArg<U32> getArg() const {
      assertHasValue();
      return {name(), raw_};
   }

 protected:
   void rawIs(U32 raw) noexcept {
      raw_ = raw;
      hasValueIs(true);
   }
   U32 raw() const noexcept { return raw_; }

 private:
   U32 raw_ = 0;
};

// An unsigned integer of 64 bits, and the base of the others of that size.
class Attr64Info : public AttrInfo {
 public:
   Attr64Info(AttrName name, Renderer const& renderer) noexcept : AttrInfo(name, renderer) {}
   template <std::unsigned_integral Value>
   Attr64Info(AttrName name, Renderer const& renderer, Value value) noexcept : AttrInfo(name, renderer) {
      setValue(value);
   }

   template <std::unsigned_integral Value>
   void setValue(Value value) noexcept {
      rawIs(value);
   }
   NumberArg<U64> getArg() const {
      assertHasValue();
      return {name(), raw_};
   }

 protected:
   void rawIs(U64 raw) noexcept {
      raw_ = raw;
      hasValueIs(true);
   }
   U64 raw() const noexcept { return raw_; }

 private:
   U64 raw_ = 0;
};

class S32AttrInfo : public Attr32Info {
 public:
   S32AttrInfo(AttrName name, Renderer const& renderer) noexcept : Attr32Info(name, renderer) {}
   S32AttrInfo(AttrName name, Renderer const& renderer, S32 value) noexcept : Attr32Info(name, renderer) {
      setValue(value);
   }

   void setValue(S32 value) noexcept { rawIs(std::bit_cast<U32>(value)); }
   NumberArg<S32> getArg() const {
      assertHasValue();
      return {name(), std::bit_cast<S32>(raw())};
   }
};

class S64AttrInfo : public Attr64Info {
 public:
   S64AttrInfo(AttrName name, Renderer const& renderer) noexcept : Attr64Info(name, renderer) {}
   S64AttrInfo(AttrName name, Renderer const& renderer, S64 value) noexcept : Attr64Info(name, renderer) {
      setValue(value);
   }

   void setValue(S64 value) noexcept { rawIs(std::bit_cast<U64>(value)); }
   NumberArg<S64> getArg() const {
      assertHasValue();
      return {name(), std::bit_cast<S64>(raw())};
   }
};

class DoubleAttrInfo : public Attr64Info {
 public:
   DoubleAttrInfo(AttrName name, Renderer const& renderer) noexcept : Attr64Info(name, renderer) {}
   DoubleAttrInfo(AttrName name, Renderer const& renderer, double value) noexcept : Attr64Info(name, renderer) {
      setValue(value);
   }

   void setValue(double value) noexcept { rawIs(std::bit_cast<U64>(value)); }
   NumberArg<double> getArg() const {
      assertHasValue();
      return {name(), std::bit_cast<double>(raw())};
   }
};

// A boolean. Subclasses that print it as other texts call flagIs() from a setValue of their own.
class BoolAttrInfo : public Attr32Info {
 public:
   BoolAttrInfo(AttrName name, Renderer const& renderer) noexcept : Attr32Info(name, renderer) {}
   BoolAttrInfo(AttrName name, Renderer const& renderer, std::same_as<bool> auto value) : Attr32Info(name, renderer) {
      BoolAttrInfo::setValue(value);
   }

   void setValue(bool value) { flagIs(value, "True", "False", {source, "void BoolAttrInfo::setValue(bool)"}); }
   BoolArg getArg() const {
      assertHasValue();
      return {name(), text_, raw() != 0};
   }

 protected:
   // The texts are literals: they are kept, not copied.
   void flagIs(bool value, std::string_view whenTrue, std::string_view whenFalse, AssertSite const& site) {
      text_ = byFormat(value ? whenTrue : whenFalse, std::string_view(), site);
      rawIs(value ? 1 : 0);
   }

 private:
   std::string_view text_;
};

// A text, copied into the attribute. Up to 99 characters stay in it, more go to the heap.
class KIV_EXPORT StringAttrInfo : public Attr32Info {
 public:
   static constexpr std::size_t bufferSize = 100;

   StringAttrInfo(AttrName name, Renderer const& renderer) noexcept : Attr32Info(name, renderer) {}
   template <class Value>
   StringAttrInfo(AttrName name, Renderer const& renderer, Value const& value) : StringAttrInfo(name, renderer) {
      setValue(value);
   }
   ~StringAttrInfo() { release(); }

   // The runtime's strings and all other texts.
   void setValue(std::string_view value) {
      release();
      char* const to = value.size() < bufferSize ? buffer_ : heapText(value.size());
      textIs({to, static_cast<std::size_t>(value.copy(to, value.size()))});
   }
   // A value that writes its own text, such as an address.
   template <SelfFormatting Value>
   void setValue(Value const& value) {
      static_assert(Value::maxTextLength < bufferSize);
      release();
      textIs({buffer_, static_cast<std::size_t>(value.formatTo(buffer_))});
   }
   bool isOnHeap() const noexcept { return isOnHeap_; }
   void reset() noexcept {
      release();
      text_ = {};
      AttrInfo::reset();
   }
   TextArg getArg() const {
      assertHasValue();
      return {name(), text_};
   }

 protected:
   // Keeps, without copying, the text that belongs to the output's format; for subclasses whose texts are constants.
   void constantIs(std::string_view text, std::string_view model, AssertSite const& site) {
      release();
      textIs(byFormat(text, model, site));
   }

 private:
   void textIs(std::string_view text) noexcept {
      text_ = text;
      hasValueIs(true);
   }
   char* heapText(std::size_t size);
   void release() noexcept {
      if (isOnHeap_) [[unlikely]] {
         releaseHeap();
      }
   }
   void releaseHeap() noexcept;

   std::string_view text_;
   bool isOnHeap_ = false;
   char buffer_[bufferSize];
};

}  // namespace cliprint
