#pragma once

#include "Zam/TypeArgument.h"

#include <any>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <typeindex>
#include <vector>

namespace Zam {

using Arguments = std::span<std::any const>;

template <class T>
class TypeBuilder;

// What the runtime knows about one type, and its use by name. A value travels in an std::any, an entity as a Ptr in
// one. A wrong object, attribute, operation or argument is a TypeError, a number or string that its type cannot hold a
// RangeError. Reading is safe from several threads once all types are registered.
class KIV_EXPORT TypeInfo {
 public:
   explicit TypeInfo(std::string_view name) : name_(name) {}

   std::string_view name() const noexcept { return name_; }
   // In the order in which they were registered.
   std::vector<std::string_view> attributes() const;
   std::vector<std::string_view> operations() const;

   // From the arguments of one of its constructors, or from one fromText(...). An entity comes initialised.
   std::any construct(Arguments arguments = {}) const;
   std::any attribute(std::any const& object, std::string_view attribute) const;
   void attributeIs(std::any& object, std::string_view attribute, std::any const& value) const;
   // The result, empty for an operation that returns nothing. Objects that are not entities change in place.
   std::any call(std::any& object, std::string_view operation, Arguments arguments = {}) const;
   // An operation that needs no object.
   std::any call(std::string_view operation, Arguments arguments = {}) const;

   std::string toText(std::any const& object) const;
   // Values by content, entities by identity.
   bool equal(std::any const& a, std::any const& b) const;
   std::size_t hash(std::any const& object) const;
   bool isSet(std::any const& object) const;

 private:
   template <class T>
   friend class TypeBuilder;

   // The object in an any: whether there is one of this type at all, and whether this handle may change it.
   struct Object {
      void* address = nullptr;
      bool held = false;
      bool constant = false;
   };
   using Invoke = std::function<std::any(void* object, Arguments, OperationName const&)>;
   enum class Access : U8 { none, reads, modifies };
   struct Callable {
      std::string name;
      std::size_t arity = 0;
      Access access = Access::none;
      Invoke invoke;
   };
   using Callables = std::vector<Callable>;
   // What every type can do.
   struct Basics {
      Object (*object)(std::any const&) = nullptr;
      std::string (*toText)(void const*) = nullptr;
      bool (*equal)(void const*, void const*) = nullptr;
      std::size_t (*hash)(void const*) = nullptr;
      bool (*isSet)(void const*) = nullptr;
      // Null for an entity.
      std::any (*fromText)(std::string_view) = nullptr;
   };

   void basicsIs(Basics const& basics) noexcept { basics_ = basics; }
   // Constructors differ in the number of their arguments, all others in their name.
   void constructorIs(std::size_t arity, Invoke invoke);
   void getterIs(std::string_view attribute, Invoke invoke);
   void setterIs(std::string_view attribute, Invoke invoke);
   void operationIs(Callable operation);

   std::any invoke(Callables const& among, std::any const* object, OperationName const& name,
                   Arguments arguments) const;
   void const* valueOf(std::any const& object, std::string_view operation) const;
   void* checkedObject(std::any const* object, Callable const& callable) const;
   static void callableIs(Callables& among, Callable callable);

   std::string name_;
   Basics basics_;
   Callables constructors_;
   Callables getters_;
   Callables setters_;
   Callables operations_;
};

}  // namespace Zam
