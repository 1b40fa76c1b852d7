#include "python/src/Objects.h"

#include <algorithm>
#include <limits>

namespace py = pybind11;

namespace kivPython {
namespace {

using Zam::TypeUse;

// Null for a type that is not registered.
Zam::TypeInfo const* registered(TypeUse const& use) {
   return Zam::TypeRegistry::instance().type(Zam::typeName(use.type));
}

py::str textToPython(std::string_view text) {
   PyObject* const made = PyUnicode_DecodeUTF8(text.data(), static_cast<py::ssize_t>(text.size()), "surrogateescape");
   return made != nullptr ? py::reinterpret_steal<py::str>(made) : throw py::error_already_set();
}

std::string textOf(py::handle value) {
   auto const bytes =
       py::reinterpret_steal<py::bytes>(PyUnicode_AsEncodedString(value.ptr(), "utf-8", "surrogateescape"));
   return bytes ? std::string(bytes) : throw py::error_already_set();
}

bool isNumber(TypeUse const& use) {
   static constexpr std::string_view numbers[] = {"U8", "U16", "U32", "U64", "S32", "S64", "double", "bool"};
   return std::ranges::find(numbers, Zam::typeName(use.type)) != std::end(numbers);
}

std::any integerArgument(py::handle value, TypeUse const& expected) {
   if (!isNumber(expected)) {
      return Zam::fromText(textOf(py::str(value)));
   }
   int overflow = 0;
   long long const number = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
   if (overflow == 0) {
      return number;
   }
   unsigned long long const large = overflow > 0 ? PyLong_AsUnsignedLongLong(value.ptr()) : 0;
   if (overflow < 0 || PyErr_Occurred() != nullptr) {
      PyErr_Clear();
      Zam::throwNumberRange();
   }
   return large;
}

bool isFormOf(Zam::TypeInfo const& type, std::string const& text) {
   try {
      std::any const argument = Zam::fromText(text);
      type.construct({&argument, 1});
      return true;
   } catch (Zam::ParseError const&) {
      return false;
   } catch (Zam::RangeError const&) {
      return true;  // who takes the argument says so
   }
}

// As it is, or in quotes when that is what the type writes.
std::any textArgument(std::string text, TypeUse const& expected) {
   auto const* const type = expected.isCollection() ? nullptr : registered(expected);
   if (type == nullptr || type->isEntity() || type->isString()) {
      return text;
   }
   std::string quoted;
   Zam::strepAppendQuoted(quoted, text);
   bool const isPlain =
       type->isEnumeration() || isNumber(expected) || text.starts_with("Value(") || isFormOf(*type, text);
   return Zam::fromText(isPlain ? std::move(text) : std::move(quoted));
}

TypeUse partOf(std::type_index type) {
   return {TypeUse::Kind::value, type};
}

std::any elementsOf(py::handle value, TypeUse const& expected) {
   Zam::Elements elements;
   TypeUse const element = partOf(expected.type);
   if (expected.kind == TypeUse::Kind::map) {
      TypeUse const key = partOf(expected.key);
      for (py::handle const at : py::list(value.attr("items")())) {
         auto const pair = py::cast<py::tuple>(at);
         elements.elements.emplace_back(fromPython(pair[0], key), fromPython(pair[1], element));
      }
      return elements;
   }
   for (py::handle const at : value) {
      auto const place = static_cast<unsigned long long>(elements.elements.size());
      bool const isSet = expected.kind == TypeUse::Kind::set;
      elements.elements.emplace_back(isSet ? fromPython(at, element) : std::any(place),
                                     isSet ? std::any() : fromPython(at, element));
   }
   return elements;
}

bool standsFor(py::handle value, TypeUse const& expected) {
   return expected.kind == TypeUse::Kind::map ? py::hasattr(value, "items")
                                              : expected.isCollection() && py::hasattr(value, "__iter__");
}

[[noreturn]] void throwUnknown(py::handle value, TypeUse const& expected) {
   throw Zam::TypeError("expected " + expected.name() + ", found Python's " +
                        std::string(py::str(py::type::handle_of(value).attr("__name__"))));
}

std::string placeOf(std::string const& what, Zam::Signature::Parameter const& parameter, std::size_t index) {
   return what + ": argument " + (parameter.name.empty() ? std::to_string(index) : std::string(parameter.name));
}

std::size_t positionOf(Zam::Signature const& signature, std::string_view name) {
   auto const found = std::ranges::find(signature.parameters, name, &Zam::Signature::Parameter::name);
   return static_cast<std::size_t>(found - signature.parameters.begin());
}

// A constructor whose arguments have names may leave out any.
bool hasDefaults(Zam::Signature const& signature) {
   return signature.name == Zam::constructorName &&
          std::ranges::none_of(signature.parameters, &std::string_view::empty, &Zam::Signature::Parameter::name);
}

// All by position, or the first by position and others by name.
bool takes(Zam::Signature const& signature, std::size_t positional, py::kwargs const& named) {
   auto const size = signature.parameters.size();
   auto const given = positional + named.size();
   bool const areMissingDefaults = hasDefaults(signature) && (given == 0 || !named.empty());
   if (given > size || (given < size && !areMissingDefaults)) {
      return false;
   }
   return std::all_of(named.begin(), named.end(), [&](auto const& argument) {
      auto const at = positionOf(signature, textOf(argument.first));
      return at >= positional && at != size;
   });
}

// The one that leaves the fewest arguments to their defaults.
Zam::Signature const& chosen(std::vector<Zam::Signature const*> const& signatures, std::string const& what,
                             std::size_t positional, py::kwargs const& named) {
   Zam::Signature const* found = nullptr;
   std::string arities;
   for (auto const* const signature : signatures) {
      auto const arity = signature->parameters.size();
      if (takes(*signature, positional, named) && (found == nullptr || arity < found->parameters.size())) {
         found = signature;
      }
      arities.append(arities.empty() ? "" : " or ").append(std::to_string(arity));
   }
   if (found != nullptr) {
      return *found;
   }
   std::string names;
   for (auto const& argument : named) {
      names.append(names.empty() ? ", named " : ", ").append(textOf(argument.first));
   }
   throw Zam::TypeError(what + ": takes " + (arities.empty() ? "no arguments of any number" : arities) +
                        " arguments, not " + std::to_string(positional + named.size()) + names);
}

std::any converted(py::handle value, Zam::Signature const& signature, std::size_t at, std::string const& what) {
   auto const& parameter = signature.parameters[at];
   try {
      return fromPython(value, parameter.type);
   } catch (Zam::TypeError const& error) {
      throw Zam::TypeError(placeOf(what, parameter, at) + ": " + error.what());
   }
}

}  // namespace

py::object toPython(std::any const& held) {
   if (!held.has_value()) {
      return py::none();
   }
   if (auto const* const truth = std::any_cast<bool>(&held)) {
      return py::bool_(*truth);
   }
   if (auto const integer = Zam::detail::integerOf(held)) {
      return integer->negative ? py::int_(static_cast<S64>(integer->bits)) : py::int_(integer->bits);
   }
   if (auto const* const real = std::any_cast<double>(&held)) {
      return py::float_(*real);
   }
   auto const* const type = Zam::TypeRegistry::instance().typeOf(held);
   if (type == nullptr) {
      throw Zam::TypeError("a value of type " + Zam::typeName(held.type()) + " has no registered type");
   }
   if (type->isString()) {
      return textToPython(type->string(held));
   }
   if (type->isEnumeration()) {
      return textToPython(type->toText(held));
   }
   if (auto const handle = Zam::detail::entityOf(held); handle && handle->entity == nullptr) {
      return py::none();
   }
   return py::cast(Object{type, held});
}

std::any fromPython(py::handle value, TypeUse const& expected) {
   if (value.is_none()) {
      return nullptr;
   }
   if (py::isinstance<Object>(value)) {
      return value.cast<Object const&>().held;
   }
   if (py::hasattr(value, "_view")) {
      return value.attr("_view").cast<View const&>().seen;
   }
   if (py::isinstance<py::bool_>(value)) {
      bool const truth = value.cast<bool>();
      return expected.type == typeid(bool) ? std::any(truth) : std::any(truth ? 1LL : 0LL);
   }
   if (py::isinstance<py::int_>(value)) {
      return integerArgument(value, expected);
   }
   if (py::isinstance<py::float_>(value)) {
      return value.cast<double>();
   }
   if (py::isinstance<py::str>(value)) {
      return textArgument(textOf(value), expected);
   }
   if (py::isinstance<py::bytes>(value)) {
      return value.cast<std::string>();
   }
   if (standsFor(value, expected)) {
      return elementsOf(value, expected);
   }
   if (std::string(py::str(py::type::handle_of(value).attr("__module__"))) == "ipaddress") {
      return textArgument(textOf(py::str(value)), expected);
   }
   throwUnknown(value, expected);
}

std::string plainText(Zam::TypeInfo const& type, std::any const& held) {
   std::string text = type.toText(held);
   if (!text.starts_with('\'')) {
      return text;
   }
   return Zam::StrepReader(text).quoted();
}

std::vector<std::any> argumentsFor(std::vector<Zam::Signature const*> const& signatures, std::string const& what,
                                   py::args const& args, py::kwargs const& named) {
   auto const& signature = chosen(signatures, what, args.size(), named);
   std::vector<std::any> arguments(signature.parameters.size(), Zam::DefaultValue{});
   for (std::size_t i = 0; i != args.size(); ++i) {
      arguments[i] = converted(args[i], signature, i, what);
   }
   for (auto const& [name, value] : named) {
      auto const at = positionOf(signature, textOf(name));
      arguments[at] = converted(value, signature, at, what);
   }
   return arguments;
}

}  // namespace kivPython
