#pragma once

#include "Kiv/common/RouteTypeStrings.h"
#include "Routing/RouteType.h"
#include "Zam/Export.h"
#include "cliprint/AttrInfo.h"

// The library's own renderer attributes: how route flags and route types look in text and in the model. An output
// format other than those two fails the assertion "0" with the source Kiv/KivCliPrint.
namespace cliprint {

// Blank when the route is programmed in hardware, "*" when not.
class KIV_EXPORT HardwareProgrammedAttrInfo : public BoolAttrInfo {
 public:
   using BoolAttrInfo::BoolAttrInfo;
   virtual void setValue(bool programmed);
};

// Blank when the route is programmed in the kernel, "%" when not.
class KIV_EXPORT KernelProgrammedAttrInfo : public BoolAttrInfo {
 public:
   using BoolAttrInfo::BoolAttrInfo;
   virtual void setValue(bool programmed);
};

// " L" when the route was leaked from another VRF, nothing (not a blank) when not.
class KIV_EXPORT RouteLeakedAttrInfo : public BoolAttrInfo {
 public:
   using BoolAttrInfo::BoolAttrInfo;
   virtual void setValue(bool leaked);
};

// The code in text, the word in the model.
class KIV_EXPORT RouteTypeAttrInfo : public StringAttrInfo {
 public:
   using StringAttrInfo::StringAttrInfo;
   template <class RouteType>
   void setValue(RouteType type) {
      auto const& strings = Kiv::routeTypeStringsLookup(type);
      stringsAre(strings.code, strings.modelWord);
   }

 private:
   void stringsAre(std::string_view code, std::string_view word);
};

// The host route table's letter and two blanks in text, the word in the model.
class KIV_EXPORT HostRouteTypeAttrInfo : public StringAttrInfo {
 public:
   using StringAttrInfo::StringAttrInfo;
   template <class RouteType>
   void setValue(RouteType type) {
      codeIs(Kiv::hcode(type), Kiv::hcodeWord(type));
   }

 private:
   void codeIs(char code, std::string_view word);
};

// The RIB's code in text, its name in the model.
class KIV_EXPORT RibRouteTypeAttrInfo : public StringAttrInfo {
 public:
   using StringAttrInfo::StringAttrInfo;
   void setValue(Routing::RouteType type);
};

// "IP-in-IP" or "None" in text, the enumerator's name in the model.
class KIV_EXPORT DecapTypeAttrInfo : public StringAttrInfo {
 public:
   using StringAttrInfo::StringAttrInfo;
   void setValue(Routing::Rib::DecapActionType type);
};

}  // namespace cliprint
