#pragma once

#include "Zam/OrderedMap.h"
#include "Zam/TypeInfo.h"
#include "Zam/Value.h"

#include <tuple>
#include <type_traits>
#include <utility>

// The registration of one type, piece by piece:
//
//    TypeRegistry::instance()
//       .entity<RouteSorter>("Kiv::RouteSorter")
//       .constructor(&routeSorterFactory)
//       .attribute("initialized", &RouteSorter::initialized)
//       .operation("printRoutes", &RouteSorter::printRoutes);
//
// A function is a member of the type or of a base, or a free one that takes the object as its first parameter; a free
// operation that does not is static. A piece that is registered again replaces the earlier one.
namespace Zam {

template <class T>
class TypeBuilder {
 public:
   static constexpr bool isEntity = std::derived_from<T, PtrInterface>;
   // How an object of the type travels in an any.
   using Held = std::conditional_t<isEntity, Ptr<std::conditional_t<isEntity, T, PtrInterface>>, T>;

   explicit TypeBuilder(TypeInfo& type) : type_(type) {
      if constexpr (isEntity) {
         type_.basicsIs(entityBasics());
      } else {
         type_.basicsIs(valueBasics());
         if constexpr (Described<T>) {
            description(std::make_index_sequence<descriptionOf<T>.size>());
         }
      }
   }

   // The object's handleInitialized(), where it has one, runs before the runtime hands the object out.
   template <class R, class... P>
   TypeBuilder& constructor(R (*factory)(P...)) {
      type_.constructorIs(sizeof...(P), invoker<P...>([factory](void*, P... arguments) {
                             Held object = factory(static_cast<P&&>(arguments)...);
                             if constexpr (isEntity && requires { object->handleInitialized(); }) {
                                object->handleInitialized();
                             }
                             return object;
                          }));
      return *this;
   }

   template <class R, class C>
   TypeBuilder& attribute(std::string_view name, R (C::*getter)() const) {
      type_.getterIs(name, invoker<>([getter](void* object) -> R { return (static_cast<T*>(object)->*getter)(); }));
      return *this;
   }
   template <class R>
   TypeBuilder& attribute(std::string_view name, R (*getter)(T const&)) {
      type_.getterIs(name, invoker<>([getter](void* object) -> R { return getter(*static_cast<T*>(object)); }));
      return *this;
   }
   template <class G, class R, class C, class P>
   TypeBuilder& attribute(std::string_view name, G getter, R (C::*setter)(P)) {
      attribute(name, getter);
      type_.setterIs(name, invoker<P>([setter](void* object, P value) {
                        (static_cast<T*>(object)->*setter)(static_cast<P&&>(value));
                     }));
      return *this;
   }
   // A public data member, readable and settable.
   template <class M, class C>
   requires std::is_object_v<M> TypeBuilder& attribute(std::string_view name, M C::*member) {
      type_.getterIs(name, invoker<>([member](void* object) { return static_cast<T*>(object)->*member; }));
      type_.setterIs(
          name, invoker<M>([member](void* object, M value) { static_cast<T*>(object)->*member = std::move(value); }));
      return *this;
   }

   template <class R, class C, class... P>
   TypeBuilder& operation(std::string_view name, R (C::*function)(P...)) {
      return operation<P...>(name, TypeInfo::Access::modifies, [function](void* object, P... arguments) -> R {
         return (static_cast<T*>(object)->*function)(static_cast<P&&>(arguments)...);
      });
   }
   template <class R, class C, class... P>
   TypeBuilder& operation(std::string_view name, R (C::*function)(P...) const) {
      return operation<P...>(name, TypeInfo::Access::reads, [function](void* object, P... arguments) -> R {
         return (static_cast<T const*>(object)->*function)(static_cast<P&&>(arguments)...);
      });
   }
   template <class R, class... P>
   TypeBuilder& operation(std::string_view name, R (*function)(T&, P...)) {
      return operation<P...>(name, TypeInfo::Access::modifies, [function](void* object, P... arguments) -> R {
         return function(*static_cast<T*>(object), static_cast<P&&>(arguments)...);
      });
   }
   template <class R, class... P>
   TypeBuilder& operation(std::string_view name, R (*function)(T const&, P...)) {
      return operation<P...>(name, TypeInfo::Access::reads, [function](void* object, P... arguments) -> R {
         return function(*static_cast<T const*>(object), static_cast<P&&>(arguments)...);
      });
   }
   template <class R, class... P>
   TypeBuilder& operation(std::string_view name, R (*function)(P...)) {
      return operation<P...>(name, TypeInfo::Access::none, [function](void*, P... arguments) -> R {
         return function(static_cast<P&&>(arguments)...);
      });
   }

   // A collection x that is a public data member: the attribute itself and the operations xIs, xDel, xDelAll and the
   // lookup x(key), whose result is empty when there is no such key. A set's xIs takes the key alone.
   template <class M, class C>
   TypeBuilder& collection(std::string_view name, M C::*member) {
      attribute(name, member);
      std::string const prefix(name);
      if constexpr (requires { &M::insertOrReplace; }) {
         keyedOperations(prefix, member, &M::value_type::key, &M::value_type::value);
      } else if constexpr (requires { typename M::key_type; }) {
         using Key = typename M::key_type;
         operation<Key>(prefix + "Is", TypeInfo::Access::modifies,
                        [member](void* object, Key key) { (static_cast<T*>(object)->*member).insert(std::move(key)); });
         deleteOperations<Key>(prefix, member);
      }
      return *this;
   }

 private:
   using Invoke = TypeInfo::Invoke;

   template <class M, class C, class Key, class Mapped, class E>
   void keyedOperations(std::string const& name, M C::*member, Key E::*, Mapped E::*) {
      operation<Key, Mapped>(name + "Is", TypeInfo::Access::modifies, [member](void* object, Key key, Mapped value) {
         (static_cast<T*>(object)->*member).insertOrReplace(std::move(key), std::move(value));
      });
      operation<Key>(name, TypeInfo::Access::reads, [member](void* object, Key const& key) {
         auto const* const found = (static_cast<T const*>(object)->*member).find(key);
         return found != nullptr ? std::any(*found) : std::any();
      });
      deleteOperations<Key>(name, member);
   }
   template <class Key, class M, class C>
   void deleteOperations(std::string const& name, M C::*member) {
      operation<Key>(name + "Del", TypeInfo::Access::modifies,
                     [member](void* object, Key const& key) { (static_cast<T*>(object)->*member).erase(key); });
      operation<>(name + "DelAll", TypeInfo::Access::modifies,
                  [member](void* object) { (static_cast<T*>(object)->*member).clear(); });
   }

   template <class... P, class Function>
   TypeBuilder& operation(std::string_view name, TypeInfo::Access access, Function function) {
      type_.operationIs({std::string(name), sizeof...(P), access, invoker<P...>(std::move(function))});
      return *this;
   }

   // Converts the arguments, from the first to the last, and the result.
   template <class... P, class Function>
   static Invoke invoker(Function function) {
      static_assert(((!std::is_lvalue_reference_v<P> || std::is_const_v<std::remove_reference_t<P>>)&&...),
                    "an argument that the operation changes would be lost");
      return [function](void* object, Arguments arguments, OperationName const& name) -> std::any {
         return invoke<P...>(function, object, arguments, name, std::index_sequence_for<P...>());
      };
   }
   template <class... P, class Function, std::size_t... I>
   static std::any invoke(Function const& function, void* object, [[maybe_unused]] Arguments arguments,
                          [[maybe_unused]] OperationName const& name, std::index_sequence<I...>) {
      std::tuple<std::remove_cvref_t<P>...> values{
          detail::argumentAs<std::remove_cvref_t<P>>(arguments[I], name, I)...};
      using R = std::invoke_result_t<Function const&, void*, P...>;
      if constexpr (std::is_void_v<R>) {
         function(object, static_cast<P&&>(std::get<I>(values))...);
         return {};
      } else if constexpr (std::same_as<std::decay_t<R>, std::string_view>) {
         return std::string(function(object, static_cast<P&&>(std::get<I>(values))...));
      } else {
         return function(object, static_cast<P&&>(std::get<I>(values))...);
      }
   }

   // What the description says.
   template <std::size_t... I>
   void description(std::index_sequence<I...>) {
      type_.constructorIs(0, invoker<>([](void*) { return T(); }));
      if constexpr (sizeof...(I) != 0) {
         constexpr auto const& attributes = descriptionOf<T>.attributes;
         type_.constructorIs(
             sizeof...(I),
             invoker<typename std::tuple_element_t<I, std::remove_cvref_t<decltype(attributes)>>::Type...>(
                 [](void*, auto... values) {
                    return T{ValueType(), std::move(values)...};
                 }));
         forEachAttribute<T>([this](auto const& at) {
            if constexpr (std::remove_cvref_t<decltype(at)>::isCollection) {
               this->collection(at.name, at.member);
            } else {
               this->attribute(at.name, at.member);
            }
         });
      }
   }

   static TypeInfo::Basics valueBasics() {
      static auto const value = [](void const* object) -> T const& { return *static_cast<T const*>(object); };
      return {
          .object = [](std::any const& object) -> TypeInfo::Object {
             auto* const address = const_cast<T*>(std::any_cast<T>(&object));
             return {address, address != nullptr, false};
          },
          .toText = [](void const* object) { return valueToStrep(value(object)); },
          .equal = [](void const* a, void const* b) { return value(a) == value(b); },
          .hash = [](void const* object) { return std::hash<T>()(value(object)); },
          .isSet = [](void const* object) { return !(value(object) == T()); },
          .fromText = [](std::string_view text) { return std::any(strepToValue<T>(text)); },
      };
   }
   static TypeInfo::Basics entityBasics() {
      return {
          .object = [](std::any const& object) -> TypeInfo::Object {
             if (auto const same = detail::pointerOf<T const>(object)) {
                return {const_cast<T*>(same->get()), true, !detail::pointerOf<T>(object)};
             }
             return {};
          },
          .toText = [](void const* object) { return valueToStrep(Ptr<T const>(static_cast<T const*>(object))); },
          .equal = [](void const* a, void const* b) { return a == b; },
          .hash = [](void const* object) { return std::hash<void const*>()(object); },
          .isSet = [](void const* object) { return object != nullptr; },
          .fromText = nullptr,
      };
   }

   TypeInfo& type_;
};

}  // namespace Zam
