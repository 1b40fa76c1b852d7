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

Signature const& TypeInfo::attributeSignature(std::string_view attribute) const {
   return callable(getters_, attribute);
}

Signature const& TypeInfo::operationSignature(std::string_view operation) const {
   return callable(operations_, operation);
}

std::vector<Signature const*> TypeInfo::constructors() const {
   std::vector<Signature const*> signatures;
   for (auto const& constructor : constructors_) {
      signatures.push_back(&constructor);
   }
   return signatures;
}

bool TypeInfo::isSettable(std::string_view attribute) const {
   return std::ranges::find(setters_, attribute, &Callable::name) != setters_.end();
}

std::any TypeInfo::construct(Arguments arguments) const {
   if (arguments.size() == 1 && basics_.fromText != nullptr) {
      if (auto const* const text = std::any_cast<FromText>(&arguments[0])) {
         return basics_.fromText(text->text);
      }
   }
   std::string arities;
   for (auto const& constructor : constructors_) {
      auto const arity = constructor.parameters.size();
      if (arity == arguments.size()) {
         return constructor.invoke(nullptr, arguments, {name_, constructor.name}, constructor);
      }
      arities.append(arities.empty() ? "" : " or ").append(std::to_string(arity));
   }
   fail(name_, "constructor",
        "takes " + (arities.empty() ? "no arguments of any number" : arities) + " arguments, not " +
            std::to_string(arguments.size()));
}

std::any TypeInfo::attribute(std::any const& object, std::string_view attribute) const {
   return invoke(getters_, &object, attribute, {});
}

CollectionView TypeInfo::collection(std::any const& object, std::string_view attribute) const {
   auto const view = invoke(views_, &object, attribute, {});
   return std::any_cast<CollectionView const&>(view);
}

void TypeInfo::attributeIs(std::any& object, std::string_view attribute, std::any const& value) const {
   invoke(setters_, &object, attribute, {&value, 1});
}

std::any TypeInfo::call(std::any& object, std::string_view operation, Arguments arguments) const {
   return invoke(operations_, &object, operation, arguments);
}

std::any TypeInfo::call(std::string_view operation, Arguments arguments) const {
   return invoke(operations_, nullptr, operation, arguments);
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
   auto const same = std::ranges::find_if(among, [&callable](Callable const& other) {
      return other.name == callable.name &&
             (other.name != constructorName || other.parameters.size() == callable.parameters.size());
   });
   if (same != among.end()) {
      *same = std::move(callable);
   } else {
      among.push_back(std::move(callable));
   }
}

void TypeInfo::lineIs(std::string_view attribute, std::string_view line) {
   auto const found = std::ranges::find(getters_, attribute, &Callable::name);
   assertThat(found != getters_.end(), "an attribute is told after it is registered", "Zam/TypeInfo");
   found->line = line;
}

TypeInfo::Callable const& TypeInfo::callable(Callables const& among, std::string_view name) const {
   auto const found = std::ranges::find(among, name, &Callable::name);
   if (found == among.end()) {
      fail(name_, name,
           &among == &operations_ ? "no such operation"
           : &among == &setters_  ? "no such settable attribute"
           : &among == &views_    ? "no such collection"
                                  : "no such attribute");
   }
   return *found;
}

std::any TypeInfo::invoke(Callables const& among, std::any const* object, std::string_view name,
                          Arguments arguments) const {
   auto const& called = callable(among, name);
   if (auto const arity = called.parameters.size(); arity != arguments.size()) {
      fail(name_, name, "takes " + std::to_string(arity) + " arguments, not " + std::to_string(arguments.size()));
   }
   return called.invoke(checkedObject(object, called), arguments, {name_, name}, called);
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
