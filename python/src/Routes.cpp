#include "python/src/Routes.h"

#include "Lumen/Ip6Prefix.h"
#include "Lumen/Prefix.h"
#include "Zam/Hash.h"

#include <array>
#include <cstring>

namespace py = pybind11;

// Written to the interpreter's own interface: a route costs one small allocation, and what is asked of it is made then.
namespace kivPython {
namespace {

struct RoutesObject {
   PyObject_HEAD  //
       Selected* selected;
   PyObject** vias;  // by FEC; null until the first route asks
   PyObject* vrf;
   bool addresses;
};

struct RouteObject {
   PyObject_HEAD  //
       RoutesObject* routes;
   Row const* row;
};

PyTypeObject* routesType = nullptr;
PyTypeObject* routeType = nullptr;
PyTypeObject* viaType = nullptr;

PyObject* textOf(std::string_view text) {
   return PyUnicode_DecodeUTF8(text.data(), static_cast<py::ssize_t>(text.size()), "surrogateescape");
}
PyObject* textOrNone(std::string_view text) {
   return text.empty() ? Py_NewRef(Py_None) : textOf(text);
}
template <class Number>
PyObject* numberOrNone(std::optional<Number> const& number) {
   return number ? PyLong_FromUnsignedLongLong(*number) : Py_NewRef(Py_None);
}

// A class of the module ipaddress.
PyObject* ipaddressClass(char const* name) {
   return py::object(py::module_::import("ipaddress").attr(name)).release().ptr();
}

PyObject* packed(Lumen::Ip6Addr const& address) {
   std::array<unsigned char, 16> bytes{};
   for (std::size_t i = 0; i != 8; ++i) {
      bytes[i] = static_cast<unsigned char>(address.hi() >> (56 - 8 * i));
      bytes[8 + i] = static_cast<unsigned char>(address.lo() >> (56 - 8 * i));
   }
   return PyBytes_FromStringAndSize(reinterpret_cast<char const*>(bytes.data()), bytes.size());
}

PyObject* addressObject(Lumen::Ip6Addr const& wide, bool isIpv4) {
   static PyObject* const classes[] = {ipaddressClass("IPv6Address"), ipaddressClass("IPv4Address")};
   PyObject* const value = isIpv4 ? PyLong_FromUnsignedLongLong(wide.lo()) : packed(wide);
   PyObject* const made = value != nullptr ? PyObject_CallOneArg(classes[isIpv4 ? 1 : 0], value) : nullptr;
   Py_XDECREF(value);
   return made;
}

template <class Value>
PyObject* shownText(Value const& value) {
   std::array<char, Value::maxTextLength> text;
   auto const length = static_cast<py::ssize_t>(value.formatTo(text.data()));
   PyObject* const made = PyUnicode_New(length, 127);
   if (made != nullptr) {
      std::memcpy(PyUnicode_1BYTE_DATA(made), text.data(), static_cast<std::size_t>(length));
   }
   return made;
}

PyObject* nexthopOf(ViaValue const& via, bool addresses) {
   if (!via.nexthop) {
      return Py_NewRef(Py_None);
   }
   if (!addresses) {
      return shownText(*via.nexthop);
   }
   bool const isIpv4 = via.nexthop->family() == Lumen::AddressFamily::ipv4;
   return addressObject(isIpv4 ? Lumen::Ip6Addr(0, via.nexthop->ip().value()) : via.nexthop->ip6(), isIpv4);
}

std::array<PyStructSequence_Field, 11> viaFields{
    {{"nexthop", "the address that packets are sent to; None on the link"},
     {"interface", "the name of the interface; None without one"},
     {"vrf", "the VRF that packets leave through"},
     {"label", "the MPLS label; None without one"},
     {"weight", "its share; None among vias of equal weight"},
     {"is_backup", "whether it carries traffic only when others fail"},
     {"nexthop_group", "the name of a nexthop group; None without one"},
     {"tunnel", "the id of a tunnel; None without one"},
     {"fec", "the id of the FEC that it resolves through; None without one"},
     {"action", "forward, forwardVrf, decap, or decapForwardVrf"},
     {nullptr, nullptr}}};

PyObject* viaObject(ViaValue const& via, bool addresses) {
   PyObject* const made = PyStructSequence_New(viaType);
   if (made == nullptr) {
      return nullptr;
   }
   std::array<PyObject*, viaFields.size() - 1> const fields{nexthopOf(via, addresses),
                                                            textOrNone(via.interface),
                                                            textOf(via.vrf),
                                                            numberOrNone(via.label),
                                                            numberOrNone(via.weight),
                                                            PyBool_FromLong(via.isBackup ? 1 : 0),
                                                            textOrNone(via.nexthopGroup),
                                                            numberOrNone(via.tunnel),
                                                            numberOrNone(via.fec),
                                                            textOf(via.action)};
   for (std::size_t i = 0; i != fields.size(); ++i) {
      PyStructSequence_SetItem(made, static_cast<py::ssize_t>(i), fields[i]);
   }
   if (PyErr_Occurred() != nullptr) {
      Py_DECREF(made);
      return nullptr;
   }
   return made;
}

PyObject* viasObject(std::vector<ViaValue> const& vias, bool addresses) {
   PyObject* const made = PyTuple_New(static_cast<py::ssize_t>(vias.size()));
   for (std::size_t i = 0; made != nullptr && i != vias.size(); ++i) {
      PyObject* const via = viaObject(vias[i], addresses);
      if (via == nullptr) {
         Py_DECREF(made);
         return nullptr;
      }
      PyTuple_SET_ITEM(made, static_cast<py::ssize_t>(i), via);
   }
   return made;
}

// Borrowed.
PyObject* viasAt(RoutesObject* routes, U32 fec) {
   PyObject*& vias = routes->vias[fec];
   if (vias == nullptr) {
      try {
         auto const& selected = *routes->selected;
         vias = viasObject(selected.vias(selected.fecs[fec]), routes->addresses);
      } catch (std::exception const& error) {
         PyErr_SetString(PyExc_RuntimeError, error.what());
      }
   }
   return vias;
}

RouteObject* asRoute(PyObject* self) {
   return reinterpret_cast<RouteObject*>(self);
}
RoutesObject* asRoutes(PyObject* self) {
   return reinterpret_cast<RoutesObject*>(self);
}
Selected const& listOf(PyObject* route) {
   return *asRoute(route)->routes->selected;
}
Row const& rowOf(PyObject* route) {
   return *asRoute(route)->row;
}

PyObject* prefixText(Selected const& selected, Row const& row) {
   if (selected.isIpv4()) {
      return shownText(Lumen::Prefix(Lumen::IpAddr(static_cast<U32>(row.address.lo())), row.length));
   }
   return shownText(Lumen::Ip6Prefix(row.address, row.length));
}

PyObject* routePrefix(PyObject* self, void*) {
   auto const& selected = listOf(self);
   auto const& row = rowOf(self);
   if (!asRoute(self)->routes->addresses) {
      return prefixText(selected, row);
   }
   static PyObject* const classes[] = {ipaddressClass("IPv6Network"), ipaddressClass("IPv4Network")};
   bool const isIpv4 = selected.isIpv4();
   PyObject* const address = isIpv4 ? PyLong_FromUnsignedLongLong(row.address.lo()) : packed(row.address);
   PyObject* const pair = address != nullptr ? Py_BuildValue("((Ni))", address, int{row.length}) : nullptr;
   PyObject* const made = pair != nullptr ? PyObject_CallObject(classes[isIpv4 ? 1 : 0], pair) : nullptr;
   Py_XDECREF(pair);
   return made;
}

PyObject* routeVias(PyObject* self, void*) {
   return Py_XNewRef(viasAt(asRoute(self)->routes, rowOf(self).fec));
}

PyObject* routeNexthops(PyObject* self, void*) {
   PyObject* const vias = viasAt(asRoute(self)->routes, rowOf(self).fec);
   PyObject* const made = vias != nullptr ? PyTuple_New(PyTuple_GET_SIZE(vias)) : nullptr;
   for (py::ssize_t i = 0; made != nullptr && i != PyTuple_GET_SIZE(vias); ++i) {
      PyTuple_SET_ITEM(made, i, Py_NewRef(PyStructSequence_GetItem(PyTuple_GET_ITEM(vias, i), 0)));
   }
   return made;
}

// One string for each type of each family.
PyObject* typeText(std::string_view (*text)(Lumen::AddressFamily, U8), Lumen::AddressFamily family, U8 type) {
   std::string_view const known = text(family, type);
   PyObject* made = known.empty() ? PyUnicode_FromFormat("%d", int{type}) : textOf(known);
   if (made != nullptr) {
      PyUnicode_InternInPlace(&made);
   }
   return made;
}
PyObject* routeTypeText(PyObject* self, void*) {
   return typeText(typeWord, listOf(self).family, rowOf(self).type);
}
PyObject* routeCode(PyObject* self, void*) {
   return typeText(typeCode, listOf(self).family, rowOf(self).type);
}
PyObject* routeSourceVrf(PyObject* self, void*) {
   auto const* const name = listOf(self).vrfNames->vrfName(rowOf(self).sourceVrf);
   return name != nullptr ? textOf(name->bytes()) : Py_NewRef(Py_None);
}
PyObject* routeVrf(PyObject* self, void*) {
   return Py_NewRef(asRoute(self)->routes->vrf);
}
PyObject* routeFamily(PyObject* self, void*) {
   return PyLong_FromLong(listOf(self).isIpv4() ? 4 : 6);
}
PyObject* routeFec(PyObject* self, void*) {
   return PyLong_FromUnsignedLongLong(listOf(self).fecs[rowOf(self).fec].value());
}
template <auto Member>
PyObject* routeNumber(PyObject* self, void*) {
   return PyLong_FromUnsignedLong(rowOf(self).*Member);
}
template <auto Member>
PyObject* routeTruth(PyObject* self, void*) {
   return PyBool_FromLong(rowOf(self).*Member ? 1 : 0);
}

std::array<PyGetSetDef, 15> routeAttributes{
    {{"prefix", routePrefix, nullptr, "the destination: a string, or an ipaddress network when that was asked for",
      nullptr},
     {"length", routeNumber<&Row::length>, nullptr, "the length of the prefix", nullptr},
     {"vias", routeVias, nullptr, "the ways out, as a tuple of Via", nullptr},
     {"nexthops", routeNexthops, nullptr, "the next hops of the vias; None for one on the link", nullptr},
     {"preference", routeNumber<&Row::preference>, nullptr, "the smallest wins", nullptr},
     {"metric", routeNumber<&Row::metric>, nullptr, "the metric", nullptr},
     {"type", routeTypeText, nullptr, "what it was learned from, as the model of the route table calls it", nullptr},
     {"code", routeCode, nullptr, "the same as the code of the route table's text", nullptr},
     {"vrf", routeVrf, nullptr, "the VRF that it is in", nullptr},
     {"source_vrf", routeSourceVrf, nullptr, "the VRF that it was leaked from; None for most", nullptr},
     {"in_hardware", routeTruth<&Row::isInHardware>, nullptr, "whether the hardware forwards by it", nullptr},
     {"in_kernel", routeTruth<&Row::isInKernel>, nullptr, "whether the kernel forwards by it", nullptr},
     {"family", routeFamily, nullptr, "4 or 6", nullptr},
     {"fec", routeFec, nullptr, "the id of its forwarding equivalence class", nullptr},
     {nullptr, nullptr, nullptr, nullptr, nullptr}}};

bool sameRow(RouteObject* a, RouteObject* b) {
   Row const& x = *a->row;
   Row const& y = *b->row;
   return a->routes->selected->family == b->routes->selected->family && x.address == y.address &&
          x.length == y.length && x.type == y.type && x.preference == y.preference && x.metric == y.metric &&
          x.isInHardware == y.isInHardware && x.isInKernel == y.isInKernel;
}

// By all that it shows, vias included; the order is that of prefixes.
PyObject* routeCompare(PyObject* self, PyObject* other, int operation) {
   if (Py_TYPE(other) != routeType || (operation != Py_EQ && operation != Py_NE && operation != Py_LT)) {
      Py_RETURN_NOTIMPLEMENTED;
   }
   if (operation == Py_LT) {
      auto const& a = rowOf(self);
      auto const& b = rowOf(other);
      return PyBool_FromLong(std::tuple(listOf(self).family, a.address, a.length) <
                             std::tuple(listOf(other).family, b.address, b.length));
   }
   int equal = sameRow(asRoute(self), asRoute(other)) ? 1 : 0;
   equal =
       equal == 1 ? PyObject_RichCompareBool(asRoute(self)->routes->vrf, asRoute(other)->routes->vrf, Py_EQ) : equal;
   if (equal == 1) {
      PyObject* const vias = viasAt(asRoute(self)->routes, rowOf(self).fec);
      PyObject* const otherVias = viasAt(asRoute(other)->routes, rowOf(other).fec);
      equal = vias != nullptr && otherVias != nullptr ? PyObject_RichCompareBool(vias, otherVias, Py_EQ) : -1;
   }
   return equal < 0 ? nullptr : PyBool_FromLong((equal == 1) == (operation == Py_EQ) ? 1 : 0);
}

py::ssize_t routeHash(PyObject* self) {
   auto const& row = rowOf(self);
   auto const hash = static_cast<py::ssize_t>(
       Zam::combinedHash(row.address.hashValue(), std::size_t{row.length}, std::size_t{row.metric}));
   return hash == -1 ? -2 : hash;
}

PyObject* routeRepr(PyObject* self) {
   PyObject* const prefix = prefixText(listOf(self), rowOf(self));
   PyObject* const type = routeTypeText(self, nullptr);
   PyObject* const nexthops = routeNexthops(self, nullptr);
   PyObject* const made = prefix != nullptr && type != nullptr && nexthops != nullptr
                              ? PyUnicode_FromFormat("<Route %U %U via %S>", prefix, type, nexthops)
                              : nullptr;
   Py_XDECREF(prefix);
   Py_XDECREF(type);
   Py_XDECREF(nexthops);
   return made;
}

void routeFree(PyObject* self) {
   PyTypeObject* const type = Py_TYPE(self);
   Py_DECREF(asRoute(self)->routes);
   PyObject_Free(self);
   Py_DECREF(type);
}

PyObject* routesItem(PyObject* self, py::ssize_t index) {
   auto const& rows = asRoutes(self)->selected->rows;
   if (index < 0 || static_cast<std::size_t>(index) >= rows.size()) {
      PyErr_SetString(PyExc_IndexError, "no such route");
      return nullptr;
   }
   auto* const made = PyObject_New(RouteObject, routeType);
   if (made != nullptr) {
      made->routes = reinterpret_cast<RoutesObject*>(Py_NewRef(self));
      made->row = &rows[static_cast<std::size_t>(index)];
   }
   return reinterpret_cast<PyObject*>(made);
}

py::ssize_t routesLength(PyObject* self) {
   return static_cast<py::ssize_t>(asRoutes(self)->selected->rows.size());
}

void routesFree(PyObject* self) {
   auto* const routes = asRoutes(self);
   PyTypeObject* const type = Py_TYPE(self);
   for (std::size_t i = 0; i != routes->selected->fecs.size(); ++i) {
      Py_XDECREF(routes->vias[i]);
   }
   PyMem_Free(routes->vias);
   Py_XDECREF(routes->vrf);
   delete routes->selected;
   PyObject_Free(self);
   Py_DECREF(type);
}

// What each row has in a column, as a memory view of numbers of that format.
template <class Number, class ValueOf>
py::object column(std::vector<Row> const& rows, char const* format, ValueOf const& valueOf) {
   auto const bytes = py::reinterpret_steal<py::object>(
       PyBytes_FromStringAndSize(nullptr, static_cast<py::ssize_t>(rows.size() * sizeof(Number))));
   if (!bytes) {
      throw py::error_already_set();
   }
   char* to = PyBytes_AS_STRING(bytes.ptr());
   for (Row const& row : rows) {
      Number const value = valueOf(row);
      std::memcpy(to, &value, sizeof(value));
      to += sizeof(value);
   }
   return py::reinterpret_steal<py::object>(PyMemoryView_FromObject(bytes.ptr())).attr("cast")(format);
}

std::array<U64, 2> networkOrder(Lumen::Ip6Addr const& address) {
   return {__builtin_bswap64(address.hi()), __builtin_bswap64(address.lo())};
}

py::dict columnsOf(RoutesObject* routes) {
   auto const& rows = routes->selected->rows;
   py::dict columns;
   columns["address"] =
       routes->selected->isIpv4()
           ? column<U32>(rows, "I", [](Row const& row) { return static_cast<U32>(row.address.lo()); })
           : column<std::array<U64, 2>>(rows, "B", [](Row const& row) { return networkOrder(row.address); });
   columns["length"] = column<U8>(rows, "B", [](Row const& row) { return row.length; });
   columns["type"] = column<U8>(rows, "B", [](Row const& row) { return row.type; });
   columns["preference"] = column<U8>(rows, "B", [](Row const& row) { return row.preference; });
   columns["metric"] = column<U32>(rows, "I", [](Row const& row) { return row.metric; });
   columns["via"] = column<U32>(rows, "I", [](Row const& row) { return row.fec; });
   py::list vias;
   for (std::size_t i = 0; i != routes->selected->fecs.size(); ++i) {
      PyObject* const at = viasAt(routes, static_cast<U32>(i));
      vias.append(at != nullptr ? py::handle(at) : throw py::error_already_set());
   }
   columns["vias"] = vias;
   return columns;
}

PyObject* routesColumns(PyObject* self, PyObject*) {
   try {
      return columnsOf(asRoutes(self)).release().ptr();
   } catch (py::error_already_set& error) {
      error.restore();
      return nullptr;
   }
}

PyObject* routesRepr(PyObject* self) {
   return PyUnicode_FromFormat("<%zd routes of VRF %U>", routesLength(self), asRoutes(self)->vrf);
}

std::array<PyMethodDef, 2> routesMethods{
    {{"columns", routesColumns, METH_NOARGS,
      "All routes as columns: a dictionary of memory views of numbers, one number a route.\n\n"
      "address (unsigned of 32 bits; of IPv6 16 bytes a route), length, type, preference, metric, and via: the place "
      "of "
      "the route's vias in the list vias."},
     {nullptr, nullptr, 0, nullptr}}};

template <class Function>
PyType_Slot slot(int number, Function* function) {
   return {number, reinterpret_cast<void*>(function)};
}

PyTypeObject* typeOf(py::module_& module, char const* name, char const* fullName, int size, PyType_Slot* slots) {
   PyType_Spec spec{fullName, size, 0, Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION | Py_TPFLAGS_SEQUENCE,
                    slots};
   if (std::string_view(name) == "Route") {
      spec.flags &= ~static_cast<unsigned>(Py_TPFLAGS_SEQUENCE);
   }
   PyObject* const type = PyType_FromSpec(&spec);
   if (type == nullptr) {
      throw py::error_already_set();
   }
   module.attr(name) = py::handle(type);
   return reinterpret_cast<PyTypeObject*>(type);
}

}  // namespace

void defineRoutes(py::module_& module) {
   static char const routeDoc[] = "One route. Compares by all that it shows, orders by its prefix.";
   static char const routesDoc[] = "Routes in the order of their prefixes: a sequence that does not change.";
   PyType_Slot routeSlots[] = {slot(Py_tp_getset, routeAttributes.data()),
                               slot(Py_tp_dealloc, &routeFree),
                               slot(Py_tp_richcompare, &routeCompare),
                               slot(Py_tp_hash, &routeHash),
                               slot(Py_tp_repr, &routeRepr),
                               {Py_tp_doc, const_cast<char*>(routeDoc)},
                               {0, nullptr}};
   routeType = typeOf(module, "Route", "kiv.Route", sizeof(RouteObject), routeSlots);
   PyType_Slot routesSlots[] = {slot(Py_tp_methods, routesMethods.data()),
                                slot(Py_tp_dealloc, &routesFree),
                                slot(Py_sq_item, &routesItem),
                                slot(Py_sq_length, &routesLength),
                                slot(Py_tp_repr, &routesRepr),
                                {Py_tp_doc, const_cast<char*>(routesDoc)},
                                {0, nullptr}};
   routesType = typeOf(module, "Routes", "kiv.Routes", sizeof(RoutesObject), routesSlots);
   PyStructSequence_Desc via{"kiv.Via", "One way out of a route.", viaFields.data(),
                             static_cast<int>(viaFields.size()) - 1};
   viaType = PyStructSequence_NewType(&via);
   module.attr("Via") =
       viaType != nullptr ? py::handle(reinterpret_cast<PyObject*>(viaType)) : throw py::error_already_set();
}

py::object routesOf(Selected selected, bool addresses) {
   auto* const made = PyObject_New(RoutesObject, routesType);
   if (made == nullptr) {
      throw py::error_already_set();
   }
   made->vias = static_cast<PyObject**>(PyMem_Calloc(selected.fecs.size() + 1, sizeof(PyObject*)));
   made->vrf = textOf(selected.vrf);
   made->addresses = addresses;
   made->selected = new Selected(std::move(selected));
   return py::reinterpret_steal<py::object>(reinterpret_cast<PyObject*>(made));
}

}  // namespace kivPython
