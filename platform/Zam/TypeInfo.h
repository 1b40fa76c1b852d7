#pragma once

#include "Zam/CollectionView.h"
#include "Zam/TypeArgument.h"
#include "Zam/TypeUse.h"

#include <any>
#include <initializer_list>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace Zam {

using Arguments = std::span<std::any const>;

template <class T>
class TypeBuilder;

// What the registration of an operation or attribute says for people: a line, and the names of the arguments.
struct Told {
   Told(char const* text = "",
        std::initializer_list<std::string_view> names = {})  // NOLINT(google-explicit-constructor)
       : line(text),
         arguments(names) {}
   Told(std::string_view text) : line(text) {}  // NOLINT(google-explicit-constructor): a line is all that most say
   std::string line;
   std::vector<std::string_view> arguments;
};

// How something is used: an attribute (its type is the result; it has no parameters), an operation or a constructor.
struct Signature {
   struct Parameter {
      std::string_view name;  // empty when the registration does not tell it
      TypeUse type;
   };
   enum class Access : U8 { none, reads, modifies };

   std::string name;
   std::vector<Parameter> parameters;
   TypeUse result;
   Access access = Access::none;  // to the object, which an operation without access does not need
   std::string line;              // for people; may be empty
};

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
   // TypeError for a name that is not there.
   Signature const& attributeSignature(std::string_view attribute) const;
   Signature const& operationSignature(std::string_view operation) const;
   std::vector<Signature const*> constructors() const;
   bool isSettable(std::string_view attribute) const;
   // Held through a Ptr and compared by identity, or else a value.
   bool isEntity() const noexcept { return basics_.fromText == nullptr; }
   bool isEnumeration() const noexcept { return basics_.isEnumeration; }
   // A value that is nothing but characters: Zam::String and its kin.
   bool isString() const noexcept { return basics_.string != nullptr; }
   // How many entities of the type were made in this process.
   U64 allocations() const noexcept { return basics_.allocations != nullptr ? basics_.allocations() : 0; }

   // From the arguments of one of its constructors, or from one fromText(...). An entity comes initialised.
   std::any construct(Arguments arguments = {}) const;
   // A collection is copied; collection() looks at it where it is.
   std::any attribute(std::any const& object, std::string_view attribute) const;
   CollectionView collection(std::any const& object, std::string_view attribute) const;
   void attributeIs(std::any& object, std::string_view attribute, std::any const& value) const;
   // The result, empty for an operation that returns nothing. Objects that are not entities change in place.
   std::any call(std::any& object, std::string_view operation, Arguments arguments = {}) const;
   // An operation that needs no object.
   std::any call(std::string_view operation, Arguments arguments = {}) const;

   std::string toText(std::any const& object) const;
   // Of a string, its characters, which are those of the object.
   std::string_view string(std::any const& object) const { return basics_.string(valueOf(object, "string")); }
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
   // A function with the member pointers that it captures. There are thousands of them, so that what std::function
   // makes of each would be most of the time that a registration takes to compile.
   class Invoke {
    public:
      template <class Function>
      Invoke(Function function)  // NOLINT(google-explicit-constructor): a function reads as one
          : call_([](Invoke const& self, void* object, Arguments arguments, OperationName const& name,
                     Signature const& signature) -> std::any {
               return (*reinterpret_cast<Function const*>(self.captured_))(object, arguments, name, signature);
            }) {
         static_assert(sizeof(Function) <= sizeof(captured_) && std::is_trivially_copyable_v<Function>);
         new (captured_) Function(function);
      }
      std::any operator()(void* object, Arguments arguments, OperationName const& name,
                          Signature const& signature) const {
         return call_(*this, object, arguments, name, signature);
      }

    private:
      std::any (*call_)(Invoke const&, void*, Arguments, OperationName const&, Signature const&);
      alignas(void*) unsigned char captured_[4 * sizeof(void*)]{};
   };
   using Access = Signature::Access;
   struct Callable : Signature {
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
      // Null for what is no string.
      std::string_view (*string)(void const*) = nullptr;
      // Null for a value.
      U64 (*allocations)() = nullptr;
      bool isEnumeration = false;
   };

   void basicsIs(Basics const& basics) noexcept { basics_ = basics; }
   // Constructors differ in the number of their arguments, all others in their name.
   void constructorIs(Callable constructor) { callableIs(constructors_, std::move(constructor)); }
   void getterIs(Callable getter) { callableIs(getters_, std::move(getter)); }
   void setterIs(Callable setter) { callableIs(setters_, std::move(setter)); }
   void viewIs(Callable view) { callableIs(views_, std::move(view)); }
   void operationIs(Callable operation) { callableIs(operations_, std::move(operation)); }

   void lineIs(std::string_view attribute, std::string_view line);
   Callable const& callable(Callables const& among, std::string_view name) const;
   std::any invoke(Callables const& among, std::any const* object, std::string_view name, Arguments arguments) const;
   void const* valueOf(std::any const& object, std::string_view operation) const;
   void* checkedObject(std::any const* object, Callable const& callable) const;
   static void callableIs(Callables& among, Callable callable);

   std::string name_;
   Basics basics_;
   Callables constructors_;
   Callables getters_;
   Callables setters_;
   Callables views_;
   Callables operations_;
};

}  // namespace Zam
