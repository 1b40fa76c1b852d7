#pragma once

#include "Zam/TypeRegistry.h"

#include <pybind11/pybind11.h>

#include <any>
#include <string>
#include <vector>

// Every registered type in Python, by what the registry tells of it and nothing else. Numbers, truth values, strings
// and the names of enumerators are Python's own; all other values and entities are Objects. A value that is read from
// an attribute is a copy; a collection is a view.
namespace kivPython {

struct Object {
   Zam::TypeInfo const* type;
   std::any held;
};

// An operation of an object, or of none, that is ready to be called.
struct Operation {
   pybind11::object self;  // an Object, or None
   Zam::TypeInfo const* type;
   std::string name;

   pybind11::object call(pybind11::args const& args, pybind11::kwargs const& named) const;
   Zam::Signature const& signature() const { return type->operationSignature(name); }
};

// A collection of an object, where it is. What changes it goes through the operations that the object offers.
struct View {
   pybind11::object owner;  // the Object
   std::string name;        // of the attribute
   Zam::CollectionView seen;

   Zam::TypeUse use() const { return seen.use(); }
   // Empty when there is none.
   std::any find(pybind11::handle key) const;
   void change(char const* suffix, std::vector<std::any> const& arguments) const;
};

struct ViewWalk {
   pybind11::object view;
   Zam::CollectionView::Walk walk;
};

void defineObjects(pybind11::module_& module);

// Of the thing in an any: None for nothing and for a null handle.
pybind11::object toPython(std::any const& held);
// What an operation takes that expects this. Text stands for any type that has a textual form, with or without quotes;
// a dictionary or a sequence for a collection; None for the null handle.
std::any fromPython(pybind11::handle value, Zam::TypeUse const& expected);
// The textual form for people: that of a value that is written in quotes, without them.
std::string plainText(Zam::TypeInfo const& type, std::any const& held);

// Of one of them, or of the constructor that has room for them all; those that are named may be some of its parameters.
std::vector<std::any> argumentsFor(std::vector<Zam::Signature const*> const& signatures, std::string const& what,
                                   pybind11::args const& args, pybind11::kwargs const& named);

}  // namespace kivPython
