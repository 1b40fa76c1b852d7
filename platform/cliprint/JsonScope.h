#pragma once

#include "cliprint/Interrupt.h"
#include "cliprint/RendererV2.h"

#include <exception>
#include <string_view>

namespace cliprint {

// An object, list or list entry of the model that closes at the end of its block:
//
//    auto const vias = JsonScope::list(renderer, "vias");
//
// In text format it does nothing. It leaves the output cut off where it stands when the block ends by an exception or
// after an interrupt. Its end never throws; an interrupt that comes then is met by the next call on the renderer.
class JsonScope {
 public:
   static JsonScope object(RendererV2& renderer, std::string_view key) {
      return {renderer, '}', [&] { renderer._startJsonObject(key); }};
   }
   static JsonScope list(RendererV2& renderer, std::string_view key) {
      return {renderer, ']', [&] { renderer._startJsonList(key); }};
   }
   static JsonScope listEntry(RendererV2& renderer) {
      return {renderer, '}', [&] { renderer._startJsonListEntry(); }};
   }
   template <DictKey Key>
   static JsonScope dictEntry(RendererV2& renderer, Key const& key) {
      return {renderer, '}', [&] { renderer.startDictEntry(key); }};
   }

   ~JsonScope() {
      if (isOpen_ && std::uncaught_exceptions() == exceptions_) {
         close();
      }
   }
   JsonScope(JsonScope const&) = delete;
   JsonScope& operator=(JsonScope const&) = delete;

   // Closes before the end of the block.
   void close() noexcept {
      if (isOpen_ && !interrupted()) {
         renderer_.close(bracket_);
      }
      isOpen_ = false;
   }

 private:
   template <class Open>
   JsonScope(RendererV2& renderer, char bracket, Open const& open)
       : renderer_(renderer),
         exceptions_(renderer.isModel() ? std::uncaught_exceptions() : 0),
         isOpen_(renderer.isModel()),
         bracket_(bracket) {
      if (isOpen_) {
         open();
      }
   }

   RendererV2& renderer_;
   int exceptions_;
   bool isOpen_;
   char bracket_;
};

}  // namespace cliprint
