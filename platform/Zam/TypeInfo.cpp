#include "Zam/TypeInfo.h"

#include <algorithm>

namespace Zam {

namespace {

std::vector<std::string_view> namesOf(auto const& callables) {
   std::vector<std::string_view> names;
   names.reserve(callables.size());
   for (auto const& callable : callables) {
      names.push_back(callable.name);
   }
   return names;
}

[[noreturn]] void fail(std::string_view type, std::string_view name, std::string_view problem) {
   throw TypeError(std::string(type).append(".").append(name).append(": ").append(problem));
}

}  // namespace

std::vector<std::string_view> TypeInfo::attributes() const {
   return namesOf(getters_);
}

std::vector<std::string_view> TypeInfo::operations() const {
   return namesOf(operations_);
}

std::any TypeInfo::construct(Arguments arguments) const {
   if (arguments.size() == 1 && basics_.fromText != nullptr) {
      if (auto const* const text = std::any_cast<FromText>(&arguments[0])) {
         return basics_.fromText(text->text);
      }
   }
   std::string arities;
   for (auto const& constructor : constructors_) {
      if (constructor.arity == arguments.size()) {
         return constructor.invoke(nullptr, arguments, {name_, constructor.name});
      }
      arities.append(arities.empty() ? "" : " or ").append(std::to_string(constructor.arity));
   }
   fail(name_, "constructor",
        "takes " + (arities.empty() ? "no arguments of any number" : arities) + " arguments, not " +
            std::to_string(arguments.size()));
}

std::any TypeInfo::attribute(std::any const& object, std::string_view attribute) const {
   return invoke(getters_, &object, {name_, attribute}, {});
}

void TypeInfo::attributeIs(std::any& object, std::string_view attribute, std::any const& value) const {
   invoke(setters_, &object, {name_, attribute}, {&value, 1});
}

std::any TypeInfo::call(std::any& object, std::string_view operation, Arguments arguments) const {
   return invoke(operations_, &object, {name_, operation}, arguments);
}

std::any TypeInfo::call(std::string_view operation, Arguments arguments) const {
   return invoke(operations_, nullptr, {name_, operation}, arguments);
}

std::string TypeInfo::toText(std::any const& object) const {
   return basics_.toText(valueOf(object, "toText"));
}

bool TypeInfo::equal(std::any const& a, std::any const& b) const {
   return basics_.equal(valueOf(a, "equal"), valueOf(b, "equal"));
}

std::size_t TypeInfo::hash(std::any const& object) const {
   return basics_.hash(valueOf(object, "hash"));
}

bool TypeInfo::isSet(std::any const& object) const {
   return basics_.isSet(valueOf(object, "isSet"));
}

void TypeInfo::callableIs(Callables& among, Callable callable) {
   auto const same = std::find_if(among.begin(), among.end(), [&callable](Callable const& other) {
      return other.name == callable.name && (other.name != constructorName || other.arity == callable.arity);
   });
   if (same != among.end()) {
      *same = std::move(callable);
   } else {
      among.push_back(std::move(callable));
   }
}

void TypeInfo::constructorIs(std::size_t arity, Invoke invoke) {
   callableIs(constructors_, {std::string(constructorName), arity, Access::none, std::move(invoke)});
}

void TypeInfo::getterIs(std::string_view attribute, Invoke invoke) {
   callableIs(getters_, {std::string(attribute), 0, Access::reads, std::move(invoke)});
}

void TypeInfo::setterIs(std::string_view attribute, Invoke invoke) {
   callableIs(setters_, {std::string(attribute), 1, Access::modifies, std::move(invoke)});
}

void TypeInfo::operationIs(Callable operation) {
   callableIs(operations_, std::move(operation));
}

std::any TypeInfo::invoke(Callables const& among, std::any const* object, OperationName const& name,
                          Arguments arguments) const {
   auto const callable = std::find_if(among.begin(), among.end(),
                                      [&name](Callable const& candidate) { return candidate.name == name.operation; });
   if (callable == among.end()) {
      fail(name_, name.operation,
           &among == &operations_ ? "no such operation"
           : &among == &setters_  ? "no such settable attribute"
                                  : "no such attribute");
   }
   if (callable->arity != arguments.size()) {
      fail(name_, name.operation,
           "takes " + std::to_string(callable->arity) + " arguments, not " + std::to_string(arguments.size()));
   }
   return callable->invoke(checkedObject(object, *callable), arguments, name);
}

void* TypeInfo::checkedObject(std::any const* object, Callable const& callable) const {
   if (callable.access == Access::none) {
      return nullptr;
   }
   if (object == nullptr) {
      fail(name_, callable.name, "needs an object");
   }
   auto const found = basics_.object(*object);
   if (found.address == nullptr) {
      fail(name_, callable.name,
           found.held ? "the object is null" : "the object is of type " + typeName(object->type()));
   }
   if (found.constant && callable.access == Access::modifies) {
      fail(name_, callable.name, "the object is constant");
   }
   return found.address;
}

void const* TypeInfo::valueOf(std::any const& object, std::string_view operation) const {
   auto const found = basics_.object(object);
   if (!found.held) {
      fail(name_, operation, "the object is of type " + typeName(object.type()));
   }
   return found.address;
}

}  // namespace Zam
