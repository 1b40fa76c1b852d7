#include "cliprint/AttrInfo.h"

namespace cliprint {

char* StringAttrInfo::heapText(std::size_t size) {
   char* const text = new char[size];
   text_ = {text, size};
   isOnHeap_ = true;
   return text;
}

void StringAttrInfo::releaseHeap() noexcept {
   delete[] text_.data();
   text_ = {};
   isOnHeap_ = false;
}

}  // namespace cliprint
