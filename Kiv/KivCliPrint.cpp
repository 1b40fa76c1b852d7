#include "Kiv/KivCliPrint.h"

#include <array>

namespace cliprint {

namespace {

constexpr char const* unit = "Kiv/KivCliPrint";

}  // namespace

void HardwareProgrammedAttrInfo::setValue(bool programmed) {
   flagIs(programmed, " ", "*", {unit, "virtual void cliprint::HardwareProgrammedAttrInfo::setValue(bool)"});
}

void KernelProgrammedAttrInfo::setValue(bool programmed) {
   flagIs(programmed, " ", "%", {unit, "virtual void cliprint::KernelProgrammedAttrInfo::setValue(bool)"});
}

void RouteLeakedAttrInfo::setValue(bool leaked) {
   flagIs(leaked, " L", "", {unit, "virtual void cliprint::RouteLeakedAttrInfo::setValue(bool)"});
}

void RouteTypeAttrInfo::stringsAre(std::string_view code, std::string_view word) {
   constantIs(code, word, {unit, "void cliprint::RouteTypeAttrInfo::setValue(RouteType)"});
}

void HostRouteTypeAttrInfo::codeIs(char code, std::string_view word) {
   std::array<char, 3> const text{code, ' ', ' '};
   StringAttrInfo::setValue(byFormat(std::string_view(text.data(), text.size()), word,
                                     {unit, "void cliprint::HostRouteTypeAttrInfo::setValue(RouteType)"}));
}

void RibRouteTypeAttrInfo::setValue(Routing::RouteType type) {
   constantIs(Kiv::ribRouteTypeCode(type), Kiv::ribRouteType(type),
              {unit, "void cliprint::RibRouteTypeAttrInfo::setValue(Routing::RouteType)"});
}

void DecapTypeAttrInfo::setValue(Routing::Rib::DecapActionType type) {
   bool const ipIp = type == Routing::Rib::DecapActionType::ipIp;
   constantIs(ipIp ? "IP-in-IP" : "None", ipIp ? "ipIp" : "none",
              {unit, "void cliprint::DecapTypeAttrInfo::setValue(Routing::Rib::DecapActionType)"});
}

}  // namespace cliprint
