#pragma once

#include "Zam/Error.h"
#include "Zam/Export.h"
#include "Zam/Int.h"
#include "cliprint/AttrInfo.h"
#include "cliprint/CliPrintBuffer.h"
#include "cliprint/Format.h"
#include "cliprint/FormatPrinter.h"
#include "cliprint/Interrupt.h"
#include "cliprint/JsonText.h"
#include "cliprint/Renderer.h"

#include <algorithm>
#include <bitset>
#include <concepts>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

// One walk over the data, two outputs: text for a terminal, or a model, which is compact JSON. At each point the walk
// calls for decoration (text only), an attribute (both) or structure (model only), and the renderer does what its
// format asks for. Operations marked "model only" are programming errors in text format; JsonScope knows the format
// itself.
//
// A renderer that owns its document writes the outermost braces: "{" when it is made and "}\n" at endDocument(), so
// that an operation's output is one complete JSON document. Without the flag the caller composes the pieces.
//
// Every operation throws SigIntException once the user has interrupted; what was pending is dropped, nothing is closed.
// Write errors never throw: see CliPrintBuffer.
namespace cliprint {

template <class... Args>
using AttrFormat = BasicFormat<EmptyFormat::takesAnything, Args...>;

template <class T>
concept AttributeArg = StandsForText<T> && requires(T const& arg) {
   arg.name;
};

// What can be the key of a dictionary entry: an attribute, or its getArg(), that is a text or an integer; or a value
// that writes its own text, which needs no escaping.
template <class T>
concept DictKeyArg = std::same_as<T, TextArg> ||(AttributeArg<T>&& requires(T const& arg) {
   requires std::integral<decltype(arg.value)> && !std::same_as<decltype(arg.value), bool>;
});
template <class T>
concept DictKey = SelfFormatting<T> || DictKeyArg<T> || requires(T const& attribute) {
   { attribute.getArg() } -> DictKeyArg;
};

// What a walk wrote once, to be written again as often as it is needed: text whose lines move with the indentation, or
// members of the model. The renderer that it was recorded with keeps it.
class Recording {
 public:
   bool hasLines() const noexcept { return lines_ != 0; }

 private:
   friend class RendererV2;

   U32 at_ = 0;
   U32 size_ = 0;
   U32 firstLine_ = 0;
   U32 lines_ = 0;
};

class KIV_EXPORT RendererV2 final : public Renderer {
 public:
   RendererV2(OutputFormat format, CliPrintBuffer& buffer, bool ownsDocument);
   ~RendererV2() override;

   std::string_view fwkType() const noexcept override;

   // Decoration: text format only.
   template <class... Args>
   void addFrills(Format<std::type_identity_t<Args>...> const& format, Args const&... args) {
      checkInterrupt();
      if (isText()) {
         print(buffer_, format, args...);
      }
   }

   // Attributes: in text format through `format` (an empty one: in the model only), in model format each under its own
   // name. Returns the number of characters written.
   template <AttributeArg... Args>
   int addAttributes(AttrFormat<std::type_identity_t<Args>...> const& format, Args const&... args) {
      checkInterrupt();
      U64 const before = buffer_.position();
      if (isText()) {
         if (!format.empty()) {
            print(buffer_, format, args...);
         }
      } else {
         assertModel("addAttributes");
         (member(args), ...);
      }
      return writtenSince(before);
   }

   // Plain values: text format only. Returns the number of characters written.
   template <class... Args>
   int addArgs(Format<std::type_identity_t<Args>...> const& format, Args const&... args) {
      U64 const before = buffer_.position();
      addFrills<Args...>(format, args...);
      return writtenSince(before);
   }

   // Begins a line of text, so many blanks in; nothing in the model.
   void startLine(std::size_t indent);

   // A number among others: in text format through `format`, in model format as the next element of a list.
   template <std::unsigned_integral Number>
   void addElement(Format<std::type_identity_t<Number>> const& format, Number number) {
      checkInterrupt();
      if (isText()) {
         print(buffer_, format, number);
      } else {
         assertModel("addElement");
         separateElement();
         jsonAppend(buffer_, number);
      }
   }

   // Records what is written until endRecording(), which is false when there is no recording: output left the buffer
   // meanwhile, or what was written is larger than `maxSize`. `indent` is that of the first line. Recordings do not
   // nest.
   void startRecording(std::size_t indent) noexcept {
      linesBefore_ = recordedLines_.size();
      recordedFrom_ = buffer_.position();
      recordedIndent_ = indent;
      isRecording_ = true;
   }
   bool endRecording(Recording& recording, std::size_t maxSize);
   // Writes a recording again, its lines as far in as `indent` says. In model format it has to come where the recorded
   // members came: first in an object, or behind another member.
   void replay(Recording const& recording, std::size_t indent) {
      checkInterrupt();
      next_ = isText() ? next_ : Next::member;
      if (recording.lines_ == 0) [[likely]] {
         buffer_.append(recordedText(recording));
      } else {
         replayLines(recording, indent);
      }
   }
   // Ahead of a replay: asks for the memory that it will read.
   void prefetch(Recording const& recording) const noexcept { __builtin_prefetch(recorded_.data() + recording.at_); }
   // How much all recordings take.
   std::size_t recordedSize() const noexcept { return recorded_.size(); }

   // In text format the prefix and the value, verbatim: what somebody else chose is made plain by the caller. In model
   // format the value under the key, or, with an empty key, as the next element of a list.
   void add(std::string_view textPrefix, std::string_view key, std::string_view value);

   // Opens a model object under the attribute's value, to be closed with endJsonDict(); nothing in text format.
   template <DictKey Key>
   void startDictEntry(Key const& key) {
      startEntry(key, true);
   }
   // A member whose key is the attribute's value and whose content is the one value that the next addAttributes(),
   // add() with an empty key or writeQuotedString() writes. Nothing in text format.
   template <DictKey Key>
   void startSimpleDictEntry(Key const& key) {
      startEntry(key, false);
   }
   void endSimpleDictEntry();

   // Model only. An object ends with endJsonDict(), a list with endJsonList().
   void _startJsonObject(std::string_view key);
   void _startJsonList(std::string_view key);
   void _startJsonListEntry();
   void endJsonDict();
   void endJsonList();
   void writeQuotedString(std::string_view text);

   // Before another operation writes its own document to the same descriptor, as the value of `key` in this one: writes
   // the key and flushes. In text format it only flushes.
   void startNestedDocument(std::string_view key);
   // The normal end of a document that this renderer owns; nothing follows but the last ioflush().
   void endDocument();

   // fullness() > percent, without a division.
   bool isFullerThan(U32 percent) const {
      checkInterrupt();
      return buffer_.pending() * 100 > buffer_.capacity() * percent;
   }
   U32 fullness() const {
      checkInterrupt();
      return buffer_.fullness();
   }
   void ioflush();
   // The errno of the write that ended the output, 0 while none did: a walk that streams need not go on.
   int error() const noexcept { return buffer_.error(); }

 private:
   friend class JsonScope;

   // Deeper nesting than any walk of ours is a walk that has lost its way.
   static constexpr U32 maxDepth = 128;

   // What may come next in the model, and what is needed before it.
   enum class Next : U8 {
      firstMember,   // of an object: nothing
      member,        // of an object: a comma
      firstElement,  // of a list: nothing
      element,       // of a list: a comma
      value,         // the content of a simple entry: nothing, and no name either
      nothing        // the simple entry has its content
   };

   void checkInterrupt() const {
      if (interrupted()) [[unlikely]] {
         throwInterrupt();
      }
   }
   [[noreturn]] void throwInterrupt() const;
   void assertModel(char const* operation) const {
      Zam::assertThat(isModel(), "outputFormat() == 2", "cliprint/RendererV2", operation);
   }
   int writtenSince(U64 before) const noexcept {
      return static_cast<int>(std::min<U64>(buffer_.position() - before, std::numeric_limits<int>::max()));
   }

   template <class Arg>
   void member(Arg const& arg) {
      name(arg.name);
      jsonAppend(buffer_, arg.value);
   }
   // An attribute's name, which needs no escaping, with what goes before and after it.
   void name(std::string_view attrName) {
      char* to = buffer_.room(AttrName::maxLength + 4);
      if (next_ <= Next::member) [[likely]] {
         *to = ',';
         to += next_ == Next::member ? 1 : 0;
         *to++ = '"';
         to = CliPrintBuffer::copied(to, attrName);
         *to++ = '"';
         *to++ = ':';
         next_ = Next::member;
         buffer_.endIs(to);
      } else {
         simpleContent();
      }
   }

   template <class Key>
   void startEntry(Key const& key, bool isObject) {
      checkInterrupt();
      if (isText()) {
         return;
      }
      assertModel("startDictEntry");
      if constexpr (SelfFormatting<Key>) {
         entryKeyOf(key);
      } else if constexpr (DictKeyArg<Key>) {
         entryKey(key.value);
      } else {
         entryKey(key.getArg().value);
      }
      if (isObject) {
         open('{');
      } else {
         next_ = Next::value;
      }
   }
   void entryKey(std::string_view key);
   template <SelfFormatting Key>
   void entryKeyOf(Key const& key) {
      separateMember();
      char* to = buffer_.room(Key::maxTextLength + 3);
      *to++ = '"';
      to += key.formatTo(to);
      *to++ = '"';
      *to++ = ':';
      buffer_.endIs(to);
   }
   void entryKey(std::integral auto key) {
      separateMember();
      buffer_.append('"');
      jsonAppend(buffer_, key);
      buffer_.append(std::string_view("\":"));
   }
   void separateMember();
   void separateElement();
   void simpleContent();
   void open(char bracket);
   void close(char bracket);
   void replayLines(Recording const& recording, std::size_t indent);

   std::string_view recordedText(Recording const& recording) const noexcept {
      return {recorded_.data() + recording.at_, recording.size_};
   }

   // Where a recorded line begins, and how much further than the first it is indented, or less.
   struct RecordedLine {
      U32 at;
      S32 indent;
   };

   CliPrintBuffer& buffer_;
   std::string recorded_;
   std::vector<RecordedLine> recordedLines_;
   std::size_t linesBefore_ = 0;
   U64 recordedFrom_ = 0;
   std::size_t recordedIndent_ = 0;
   bool isRecording_ = false;
   std::bitset<maxDepth> isList_;  // by depth; at depth 0, what the caller composes
   U32 depth_ = 0;
   Next next_ = Next::firstMember;
   bool ownsDocument_;
};

}  // namespace cliprint
