#include "cliprint/RendererV2.h"

#include <span>

namespace cliprint {

namespace {
constexpr char const* source = "cliprint/RendererV2";
}

Renderer::~Renderer() = default;

RendererV2::RendererV2(OutputFormat format, CliPrintBuffer& buffer, bool ownsDocument)
    : Renderer(format),
      buffer_(buffer),
      ownsDocument_(ownsDocument) {
   if (isModel() && ownsDocument_) {
      open('{');
   }
}

RendererV2::~RendererV2() = default;

std::string_view RendererV2::fwkType() const noexcept {
   return "cliprint::RendererV2";
}

void RendererV2::throwInterrupt() const {
   buffer_.drop();
   throw SigIntException();
}

void RendererV2::separateMember() {
   Zam::assertThat(next_ <= Next::member, "a named value is in an object", source);
   if (next_ == Next::member) {
      buffer_.append(',');
   }
   next_ = Next::member;
}

void RendererV2::separateElement() {
   if (next_ == Next::value) {
      simpleContent();
      return;
   }
   if (depth_ == 0 && next_ == Next::firstMember) {
      isList_[0] = true;  // the caller composes a list
      next_ = Next::firstElement;
   }
   Zam::assertThat(next_ == Next::firstElement || next_ == Next::element, "a bare value is in a list", source);
   if (next_ == Next::element) {
      buffer_.append(',');
   }
   next_ = Next::element;
}

void RendererV2::simpleContent() {
   Zam::assertThat(next_ == Next::value,
                   next_ == Next::nothing ? "a simple entry has one value" : "a named value is in an object", source);
   next_ = Next::nothing;
}

void RendererV2::open(char bracket) {
   ++depth_;
   Zam::assertThat(depth_ < maxDepth, "depth < maxDepth", source);
   buffer_.append(bracket);
   isList_[depth_] = bracket == '[';
   next_ = isList_[depth_] ? Next::firstElement : Next::firstMember;
}

void RendererV2::close(char bracket) {
   Zam::assertThat(depth_ > (ownsDocument_ ? 1U : 0U), "nothing is open", source);
   Zam::assertThat(next_ <= Next::element, "a simple entry is open", source);
   Zam::assertThat(isList_[depth_] == (bracket == ']'), "what is open is closed", source);
   buffer_.append(bracket);
   --depth_;
   next_ = isList_[depth_] ? Next::element : Next::member;
}

void RendererV2::entryKey(std::string_view key) {
   separateMember();
   jsonAppend(buffer_, key);
   buffer_.append(':');
}

void RendererV2::startLine(std::size_t indent) {
   checkInterrupt();
   if (isText()) {
      if (isRecording_) {
         recordedLines_.push_back({static_cast<U32>(buffer_.position() - recordedFrom_),
                                   static_cast<S32>(indent) - static_cast<S32>(recordedIndent_)});
      }
      buffer_.append('\n');
      buffer_.fill(' ', indent);
   }
}

// Where a line begins, the blanks that were written there stand for those that a replay writes.
bool RendererV2::endRecording(Recording& recording, std::size_t maxSize) {
   isRecording_ = false;
   auto const written = buffer_.since(recordedFrom_);
   if (!written || written->size() > maxSize) {
      recordedLines_.resize(linesBefore_);
      return false;
   }
   recording.at_ = static_cast<U32>(recorded_.size());
   recording.firstLine_ = static_cast<U32>(linesBefore_);
   recording.lines_ = static_cast<U32>(recordedLines_.size() - linesBefore_);
   std::size_t from = 0;
   for (auto& line : std::span(recordedLines_).subspan(linesBefore_)) {
      recorded_.append(written->substr(from, line.at - from));
      from = line.at + 1 + static_cast<std::size_t>(static_cast<S64>(recordedIndent_) + line.indent);
      line.at = static_cast<U32>(recorded_.size()) - recording.at_;
   }
   recorded_.append(written->substr(from));
   recording.size_ = static_cast<U32>(recorded_.size()) - recording.at_;
   return true;
}

void RendererV2::replayLines(Recording const& recording, std::size_t indent) {
   auto const text = recordedText(recording);
   std::size_t from = 0;
   for (auto const& line : std::span(recordedLines_).subspan(recording.firstLine_, recording.lines_)) {
      buffer_.append(text.substr(from, line.at - from));
      buffer_.append('\n');
      buffer_.fill(' ', static_cast<std::size_t>(std::max<S64>(static_cast<S64>(indent) + line.indent, 0)));
      from = line.at;
   }
   buffer_.append(text.substr(from));
}

void RendererV2::add(std::string_view textPrefix, std::string_view key, std::string_view value) {
   checkInterrupt();
   if (isText()) {
      buffer_.append(textPrefix);
      buffer_.append(value);
      return;
   }
   assertModel("add");
   if (key.empty()) {
      separateElement();
   } else {
      entryKey(key);
   }
   jsonAppend(buffer_, value);
}

void RendererV2::endSimpleDictEntry() {
   checkInterrupt();
   if (isText()) {
      return;
   }
   assertModel("endSimpleDictEntry");
   Zam::assertThat(next_ == Next::nothing, "a simple entry has one value", source);
   next_ = Next::member;
}

void RendererV2::_startJsonObject(std::string_view key) {
   checkInterrupt();
   assertModel("_startJsonObject");
   entryKey(key);
   open('{');
}

void RendererV2::_startJsonList(std::string_view key) {
   checkInterrupt();
   assertModel("_startJsonList");
   entryKey(key);
   open('[');
}

void RendererV2::_startJsonListEntry() {
   checkInterrupt();
   assertModel("_startJsonListEntry");
   Zam::assertThat(next_ <= Next::element, "a simple entry is open", source);
   separateElement();
   open('{');
}

void RendererV2::endJsonDict() {
   checkInterrupt();
   assertModel("endJsonDict");
   close('}');
}

void RendererV2::endJsonList() {
   checkInterrupt();
   assertModel("endJsonList");
   close(']');
}

void RendererV2::writeQuotedString(std::string_view text) {
   checkInterrupt();
   assertModel("writeQuotedString");
   separateElement();
   jsonAppend(buffer_, text);
}

void RendererV2::startNestedDocument(std::string_view key) {
   checkInterrupt();
   if (!isText()) {
      assertModel("startNestedDocument");
      entryKey(key);
   }
   ioflush();
}

void RendererV2::endDocument() {
   checkInterrupt();
   if (isText()) {
      return;
   }
   assertModel("endDocument");
   Zam::assertThat(ownsDocument_ && depth_ == 1, "everything is closed", source);
   buffer_.append(std::string_view("}\n"));
   depth_ = 0;
}

void RendererV2::ioflush() {
   checkInterrupt();
   buffer_.ioflush();
   checkInterrupt();
}

}  // namespace cliprint
