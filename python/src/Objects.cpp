#include "python/src/Objects.h"

#include "python/src/Calls.h"

#include <pybind11/stl.h>

#include <algorithm>

namespace py = pybind11;

namespace kivPython {
namespace {

// Operations take turns.
std::mutex operations;

// What shows collections: classes of the package for maps, lists and sets.
PyObject* collectionTypes = nullptr;

Zam::TypeInfo const& typeNamed(std::string const& name) {
   auto const* const type = Zam::TypeRegistry::instance().type(name);
   return type != nullptr ? *type : throw Zam::TypeError(name + ": no such type");
}

py::object construct(std::string const& name, py::args const& args, py::kwargs const& named) {
   auto const& type = typeNamed(name);
   auto const arguments = argumentsFor(type.constructors(), name, args, named);
   return toPython(longCall(operations, [&] { return type.construct(arguments); }));
}

py::object parse(std::string const& name, py::str const& text) {
   auto const& type = typeNamed(name);
   if (type.isEntity()) {
      throw Zam::TypeError(name + ": an entity is not made from text");
   }
   std::any const argument = Zam::fromText(std::string(text));
   try {
      return toPython(type.construct({&argument, 1}));
   } catch (Zam::ParseError const&) {
      std::string quoted;
      Zam::strepAppendQuoted(quoted, std::string(text));
      std::any const inQuotes = Zam::fromText(quoted);
      return toPython(type.construct({&inQuotes, 1}));
   }
}

bool has(std::vector<std::string_view> const& names, std::string_view name) {
   return std::ranges::find(names, name) != names.end();
}

py::object attribute(py::object const& self, std::string const& name) {
   auto const& object = self.cast<Object const&>();
   if (has(object.type->attributes(), name)) {
      auto const use = object.type->attributeSignature(name).result;
      if (!use.isCollection()) {
         return toPython(object.type->attribute(object.held, name));
      }
      auto const kind = static_cast<int>(use.kind) - static_cast<int>(Zam::TypeUse::Kind::map);
      return py::handle(collectionTypes)[py::int_(kind)](View{self, name, object.type->collection(object.held, name)});
   }
   if (has(object.type->operations(), name)) {
      return py::cast(Operation{self, object.type, name});
   }
   throw py::attribute_error(std::string(object.type->name()) + " has no attribute or operation " + name);
}

void attributeIs(Object& object, std::string const& name, py::handle value) {
   if (!has(object.type->attributes(), name)) {
      throw py::attribute_error(std::string(object.type->name()) + " has no attribute " + name);
   }
   if (!object.type->isSettable(name)) {
      throw py::attribute_error(std::string(object.type->name()) + "." + name + " cannot be set");
   }
   object.type->attributeIs(object.held, name, fromPython(value, object.type->attributeSignature(name).result));
}

std::vector<std::string> members(Object const& object) {
   std::vector<std::string> names;
   for (auto const name : object.type->attributes()) {
      names.emplace_back(name);
   }
   for (auto const name : object.type->operations()) {
      if (!has(object.type->attributes(), name)) {
         names.emplace_back(name);
      }
   }
   return names;
}

bool equal(Object const& object, py::handle other) {
   if (!py::isinstance<Object>(other)) {
      return false;
   }
   auto const& with = other.cast<Object const&>();
   return object.type == with.type && object.type->equal(object.held, with.held);
}

std::string represented(Object const& object) {
   std::string const text = plainText(*object.type, object.held);
   return "<" + std::string(object.type->name()) + (object.type->isEntity() ? "" : " " + text) + ">";
}

// As dictionaries, from which the stubs are written.
py::dict told(Zam::TypeUse const& use) {
   static constexpr char const* kinds[] = {"nothing", "value", "enumeration", "entity", "map", "set", "list"};
   py::dict told;
   told["kind"] = kinds[static_cast<int>(use.kind)];
   told["type"] = Zam::typeName(use.type);
   told["key"] = use.kind == Zam::TypeUse::Kind::map ? py::object(py::str(Zam::typeName(use.key))) : py::none();
   return told;
}

py::dict told(Zam::Signature const& signature) {
   py::dict told;
   py::list parameters;
   for (auto const& parameter : signature.parameters) {
      parameters.append(py::make_tuple(std::string(parameter.name), kivPython::told(parameter.type)));
   }
   told["name"] = signature.name;
   told["parameters"] = parameters;
   told["result"] = kivPython::told(signature.result);
   told["changes"] = signature.access == Zam::Signature::Access::modifies;
   told["line"] = signature.line;
   return told;
}

py::dict describe(std::string const& name) {
   auto const& type = typeNamed(name);
   py::dict described;
   py::list constructors;
   py::dict attributes;
   py::dict operationsOf;
   for (auto const* const constructor : type.constructors()) {
      constructors.append(told(*constructor));
   }
   for (auto const each : type.attributes()) {
      py::dict attribute = told(type.attributeSignature(each));
      attribute["settable"] = type.isSettable(each);
      attributes[py::str(std::string(each))] = attribute;
   }
   for (auto const each : type.operations()) {
      operationsOf[py::str(std::string(each))] = told(type.operationSignature(each));
   }
   described["name"] = name;
   described["kind"] = type.isEntity()        ? "entity"
                       : type.isEnumeration() ? "enumeration"
                       : type.isString()      ? "string"
                                              : "value";
   described["constructors"] = constructors;
   described["attributes"] = attributes;
   described["operations"] = operationsOf;
   return described;
}

py::object keyOrElement(Zam::CollectionView::Element const& element, Zam::TypeUse const& use) {
   return toPython(use.kind == Zam::TypeUse::Kind::list ? element.value : element.key);
}

}  // namespace

py::object Operation::call(py::args const& args, py::kwargs const& named) const {
   auto arguments = argumentsFor({&signature()}, std::string(type->name()) + "." + name, args, named);
   if (self.is_none()) {
      return toPython(longCall(operations, [&] { return type->call(name, arguments); }));
   }
   auto& object = self.cast<Object&>();
   return toPython(longCall(operations, [&] { return type->call(object.held, name, arguments); }));
}

std::any View::find(py::handle key) const {
   auto const seenAs = use();
   Zam::TypeUse const keyUse{Zam::TypeUse::Kind::value, seenAs.kind == Zam::TypeUse::Kind::map ? seenAs.key
                                                        : seenAs.kind == Zam::TypeUse::Kind::list
                                                            ? std::type_index(typeid(U32))
                                                            : seenAs.type};
   return seen.find(fromPython(key, keyUse));
}

void View::change(char const* suffix, std::vector<std::any> const& arguments) const {
   auto& object = owner.cast<Object&>();
   std::string const operation = name + suffix;
   if (!has(object.type->operations(), operation)) {
      throw Zam::TypeError(std::string(object.type->name()) + "." + name + " is only read");
   }
   object.type->call(object.held, operation, arguments);
}

void defineObjects(py::module_& module) {
   py::class_<Object>(module, "Object", "A value or an entity of a registered type.")
       .def("__getattr__", &attribute)
       .def("__setattr__", &attributeIs)
       .def("__dir__", &members)
       .def("__eq__", &equal, py::is_operator())
       .def("__hash__", [](Object const& object) { return object.type->hash(object.held); })
       .def("__bool__", [](Object const& object) { return object.type->isSet(object.held); })
       .def("__str__", [](Object const& object) { return plainText(*object.type, object.held); })
       .def("__repr__", &represented)
       .def("__copy__", [](Object const& object) { return object; })
       .def("__deepcopy__", [](Object const& object, py::object const&) { return object; });
   py::class_<Operation>(module, "Operation", "An operation of an object, to be called.")
       .def("__call__", &Operation::call)
       .def_property_readonly("__doc__", [](Operation const& operation) { return operation.signature().line; })
       .def("__repr__", [](Operation const& operation) {
          return "<operation " + std::string(operation.type->name()) + "." + operation.name + ">";
       });
   py::class_<ViewWalk>(module, "_Walk")
       .def("__iter__", [](py::object const& self) { return self; })
       .def("__next__", [](ViewWalk& walk) {
          auto const element = walk.walk.next();
          return element ? keyOrElement(*element, walk.view.cast<View const&>().use()) : throw py::stop_iteration();
       });
   py::class_<View>(module, "_View")
       .def("size", [](View const& view) { return view.seen.size(); })
       .def("walk",
            [](py::object const& self) {
               return ViewWalk{self, self.cast<View const&>().seen.walk()};
            })
       .def("has", [](View const& view, py::handle key) { return view.find(key).has_value(); })
       .def("find", [](View const& view, py::handle key) { return toPython(view.find(key)); })
       .def("name", [](View const& view) { return view.use().name(); })
       .def("set",
            [](View const& view, py::handle key, py::handle value) {
               auto const use = view.use();
               auto const keyType = use.kind == Zam::TypeUse::Kind::map ? use.key : std::type_index(typeid(U32));
               view.change("Is", {fromPython(key, {Zam::TypeUse::Kind::value, keyType}),
                                  fromPython(value, {Zam::TypeUse::Kind::value, use.type})});
            })
       .def("add",
            [](View const& view, py::handle element) {
               view.change("Is", {fromPython(element, {Zam::TypeUse::Kind::value, view.use().type})});
            })
       .def("remove",
            [](View const& view, py::handle key) {
               auto const use = view.use();
               auto const keyType = use.kind == Zam::TypeUse::Kind::map    ? use.key
                                    : use.kind == Zam::TypeUse::Kind::list ? std::type_index(typeid(U32))
                                                                           : use.type;
               view.change("Del", {fromPython(key, {Zam::TypeUse::Kind::value, keyType})});
            })
       .def("clear", [](View const& view) { view.change("DelAll", {}); });
   module.def(
       "types",
       [] {
          auto const names = Zam::TypeRegistry::instance().typeNames();
          return std::vector<std::string>(names.begin(), names.end());
       },
       "The names of all registered types.");
   module.def("new", &construct, "An object of a type, from the arguments of a constructor, by position or name.");
   module.def("parse", &parse, "A value of a type from its textual form.");
   module.def(
       "text", [](Object const& object) { return object.type->toText(object.held); },
       "The textual form of an object, from which parse() makes it again.");
   module.def(
       "type_name", [](Object const& object) { return std::string(object.type->name()); },
       "The name of the type of an object.");
   module.def("describe", &describe, "What is known about a type.");
   module.def(
       "call",
       [](std::string const& type, std::string const& operation, py::args const& args, py::kwargs const& named) {
          return Operation{py::none(), &typeNamed(type), operation}.call(args, named);
       },
       "Calls an operation that needs no object.");
   module.def("_collections_are", [](py::object types) { collectionTypes = types.release().ptr(); });
}

}  // namespace kivPython
