#pragma once

#include "Zam/CollectionView.h"
#include "Zam/TypeInfo.h"
#include "Zam/Value.h"

#include <initializer_list>
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
// operation that does not is static. Each may be told in a line, and its arguments by their names. A piece that is
// registered again replaces the earlier one. What the builder cannot offer of a type does not compile.
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
            description();
         }
      }
   }

   // The object's handleInitialized(), where it has one, runs before the runtime hands the object out.
   template <class R, class... P>
   TypeBuilder& constructor(R (*factory)(P...), Told const& told = {}) {
      type_.constructorIs(callable<P...>(constructorName, Access::none, told, [factory](void*, P... arguments) {
         return initialised(factory(static_cast<P&&>(arguments)...));
      }));
      return *this;
   }

   // Its arguments are the attributes of a description, which are converted one after the other into one value of it.
   template <Described Inputs, class Factory>
   TypeBuilder& constructorFrom(Factory factory, char const* line = "") {
      Callable made{{std::string(constructorName), {}, TypeUse::of<Held>(), Access::none, line},
                    [factory](void*, Arguments arguments, OperationName const& name, Signature const&) -> std::any {
                       return initialised(factory(inputsOf<Inputs>(arguments, name)));
                    }};
      forEachAttribute<Inputs>([&made]<class At>(At const& at) {
         made.parameters.push_back({at.name, TypeUse::of<typename At::Type>()});
      });
      type_.constructorIs(std::move(made));
      return *this;
   }
   // The attributes of a description that the object holds, under their names.
   template <Described Inputs, class C>
   TypeBuilder& attributesOf(Inputs const& (C::*inputs)() const) {
      forEachAttribute<Inputs>([&]<class At>(At const& at) {
         readOnly(
             at.name,
             [inputs, member = at.member](T const& object) ->
             typename At::Type const& { return (object.*inputs)().*member; },
             at.line);
      });
      return *this;
   }

   template <class R, class C>
   TypeBuilder& attribute(std::string_view name, R (C::*getter)() const, Told const& told = {}) {
      return readOnly(
          name, [getter](T const& object) -> R { return (object.*getter)(); }, told);
   }
   template <class R>
   TypeBuilder& attribute(std::string_view name, R (*getter)(T const&), Told const& told = {}) {
      return readOnly(
          name, [getter](T const& object) -> R { return getter(object); }, told);
   }
   // By whatever makes it of an object.
   template <class Get>
   TypeBuilder& attributeBy(std::string_view name, Get get, Told const& told = {}) {
      return readOnly(name, get, told);
   }
   template <class G, class R, class C, class P>
   requires std::is_member_function_pointer_v<G> TypeBuilder& attribute(std::string_view name, G getter,
                                                                        R (C::*setter)(P), Told const& told = {}) {
      attribute(name, getter, told);
      type_.setterIs(callable<P>(name, Access::modifies, told, [setter](void* object, P value) {
         (static_cast<T*>(object)->*setter)(static_cast<P&&>(value));
      }));
      return *this;
   }
   // A public data member, readable and settable.
   template <class M, class C>
   requires std::is_object_v<M> TypeBuilder& attribute(std::string_view name, M C::*member, Told const& told = {}) {
      static_assert(!Collection<M>, "a collection is registered as one, with its operations");
      return member_(name, member, told);
   }

   template <class R, class C, class... P>
   TypeBuilder& operation(std::string_view name, R (C::*function)(P...), Told const& told = {}) {
      return operation<P...>(name, Access::modifies, told, [function](void* object, P... arguments) -> R {
         return (static_cast<T*>(object)->*function)(static_cast<P&&>(arguments)...);
      });
   }
   template <class R, class C, class... P>
   TypeBuilder& operation(std::string_view name, R (C::*function)(P...) const, Told const& told = {}) {
      return operation<P...>(name, Access::reads, told, [function](void* object, P... arguments) -> R {
         return (static_cast<T const*>(object)->*function)(static_cast<P&&>(arguments)...);
      });
   }
   template <class R, class... P>
   TypeBuilder& operation(std::string_view name, R (*function)(T&, P...), Told const& told = {}) {
      return operation<P...>(name, Access::modifies, told, [function](void* object, P... arguments) -> R {
         return function(*static_cast<T*>(object), static_cast<P&&>(arguments)...);
      });
   }
   template <class R, class... P>
   TypeBuilder& operation(std::string_view name, R (*function)(T const&, P...), Told const& told = {}) {
      return operation<P...>(name, Access::reads, told, [function](void* object, P... arguments) -> R {
         return function(*static_cast<T const*>(object), static_cast<P&&>(arguments)...);
      });
   }
   template <class R, class... P>
   TypeBuilder& operation(std::string_view name, R (*function)(P...), Told const& told = {}) {
      return operation<P...>(name, Access::none, told, [function](void*, P... arguments) -> R {
         return function(static_cast<P&&>(arguments)...);
      });
   }

   // What attributes are, a line each; for those that a description has registered.
   TypeBuilder& told(std::initializer_list<std::pair<std::string_view, std::string_view>> lines) {
      for (auto const& [attribute, line] : lines) {
         type_.lineIs(attribute, line);
      }
      return *this;
   }

   // A collection x that is a public data member: the attribute itself, a view of it, and the operations xIs(key,
   // value), xDel(key), xDelAll() and the lookup x(key), whose result is empty when there is no such key. The xIs of a
   // set takes the key alone; a list is keyed by place, where its xIs puts a value at or behind the end of the list.
   template <class M, class C>
   requires std::is_object_v<M> TypeBuilder& collection(std::string_view name, M C::*member, Told const& told = {}) {
      static_assert(Collection<M>, "not a collection that the runtime can offer");
      using Key = typename detail::CollectionParts<M>::Key;
      using Value = typename detail::CollectionParts<M>::Value;
      member_(name, member, told);
      view(name, told, [member](T const& object) -> M const& { return object.*member; });
      std::string const prefix(name);
      auto const in = [member](void* object) -> M& { return static_cast<T*>(object)->*member; };
      if constexpr (SetCollection<M>) {
         operation<Key>(prefix + "Is", Access::modifies, {"Adds an element.", {"key"}},
                        [in](void* object, Key key) { in(object).insert(std::move(key)); });
      } else {
         operation<Key, Value>(prefix + "Is", Access::modifies, {"Inserts or replaces an element.", {"key", "value"}},
                               [in](void* object, Key key, Value value) {
                                  detail::elementIs(in(object), std::move(key), std::move(value));
                               });
      }
      operation<Key>(prefix + "Del", Access::modifies, {"Deletes an element.", {"key"}},
                     [in](void* object, Key const& key) { detail::elementDel(in(object), key); });
      operation<>(prefix + "DelAll", Access::modifies, "Deletes all elements.",
                  [in](void* object) { in(object).clear(); });
      return *this;
   }
   // One that the object keeps to itself, with what it offers to change it.
   template <class R, class C, class Is, class Del, class DelAll>
   TypeBuilder& collection(std::string_view name, R (C::*getter)() const, Is setter, Del deleter, DelAll clearer,
                           Told const& told = {}) {
      std::string const prefix(name);
      return view(name, getter, told)
          .operation(prefix + "Is", setter, "Inserts or replaces an element.")
          .operation(prefix + "Del", deleter, "Deletes an element.")
          .operation(prefix + "DelAll", clearer, "Deletes all elements.");
   }
   // One that is only read.
   template <class R, class C>
   TypeBuilder& view(std::string_view name, R (C::*getter)() const, Told const& told = {}) {
      auto const get = [getter](T const& object) -> R { return (object.*getter)(); };
      type_.getterIs(attributeOf<R>(name, told, [get](void* object) -> R { return get(*static_cast<T*>(object)); }));
      return view(name, told, get);
   }
   template <class R>
   TypeBuilder& view(std::string_view name, R (*getter)(T const&), Told const& told = {}) {
      auto const get = [getter](T const& object) -> R { return getter(object); };
      type_.getterIs(attributeOf<R>(name, told, [get](void* object) -> R { return get(*static_cast<T*>(object)); }));
      return view(name, told, get);
   }

 private:
   using Invoke = TypeInfo::Invoke;
   using Access = Signature::Access;
   using Callable = TypeInfo::Callable;

   static Held initialised(Held object) {
      if constexpr (isEntity && requires { object->handleInitialized(); }) {
         object->handleInitialized();
      }
      return object;
   }
   template <class Inputs>
   static Inputs inputsOf(Arguments arguments, OperationName const& name) {
      Inputs inputs{};
      std::size_t i = 0;
      forEachAttribute<Inputs>([&]<class At>(At const& at) {
         if (std::any_cast<DefaultValue>(&arguments[i]) == nullptr) {
            inputs.*at.member = detail::argumentAs<typename At::Type>(arguments[i], name, {i, at.name});
         }
         ++i;
      });
      return inputs;
   }

   template <class Get>
   TypeBuilder& readOnly(std::string_view name, Get get, Told const& told) {
      using R = std::invoke_result_t<Get, T const&>;
      static_assert(!Collection<std::remove_cvref_t<R>>, "a collection is registered as one, or as a view");
      type_.getterIs(attributeOf<R>(name, told, [get](void* object) -> R { return get(*static_cast<T*>(object)); }));
      return *this;
   }
   template <class M, class C>
   TypeBuilder& member_(std::string_view name, M C::*member, Told const& told) {
      type_.getterIs(
          attributeOf<M>(name, told, [member](void* object) -> M const& { return static_cast<T*>(object)->*member; }));
      type_.setterIs(callable<M>(name, Access::modifies, told, [member](void* object, M value) {
         static_cast<T*>(object)->*member = std::move(value);
      }));
      return *this;
   }
   // With the lookup.
   template <class Get>
   TypeBuilder& view(std::string_view name, Told const& told, Get get) {
      using R = std::invoke_result_t<Get, T const&>;
      using M = std::remove_cvref_t<R>;
      static_assert(Collection<M>, "not a collection that the runtime can offer");
      type_.viewIs(attributeOf<CollectionView>(name, told, [get](void* object) {
         T& viewed = *static_cast<T*>(object);
         if constexpr (std::is_reference_v<R>) {
            if constexpr (isEntity) {
               return CollectionView::of(get(viewed), Ptr<PtrInterface const>(&viewed));
            } else {
               return CollectionView::of(get(viewed), nullptr);
            }
         } else {
            return CollectionView::owning(get(viewed));
         }
      }));
      using Key = typename detail::CollectionParts<M>::Key;
      auto lookup = callable<Key>(name, Access::reads, {"The element of that key, if there is one.", {"key"}},
                                  [get](void* object, Key const& key) -> std::any {
                                     auto&& in = get(*static_cast<T*>(object));
                                     auto const* const found = detail::foundIn(in, key);
                                     return found != nullptr ? std::any(*found) : std::any();
                                  });
      lookup.result = TypeUse::of<typename detail::CollectionParts<M>::Value>();
      type_.operationIs(std::move(lookup));
      return *this;
   }

   template <class R, class Function>
   static Callable attributeOf(std::string_view name, Told const& told, Function function) {
      auto made = callable<>(name, Access::reads, told, std::move(function));
      made.result = TypeUse::of<R>();
      return made;
   }
   template <class... P, class Function>
   TypeBuilder& operation(std::string_view name, Access access, Told const& told, Function function) {
      type_.operationIs(callable<P...>(name, access, told, std::move(function)));
      return *this;
   }
   template <class... P, class Function>
   static Callable callable(std::string_view name, Access access, Told const& told, Function function) {
      using R = std::invoke_result_t<Function const&, void*, P...>;
      std::vector<Signature::Parameter> parameters{{{}, TypeUse::of<P>()}...};
      assertThat(told.arguments.empty() || told.arguments.size() == parameters.size(), "a name for each argument",
                 "Zam/TypeBuilder");
      for (std::size_t i = 0; i != told.arguments.size(); ++i) {
         parameters[i].name = told.arguments[i];
      }
      return {{std::string(name), std::move(parameters), TypeUse::of<R>(), access, told.line},
              invoker<P...>(std::move(function))};
   }

   // Converts the arguments, from the first to the last, and the result.
   template <class... P, class Function>
   static Invoke invoker(Function function) {
      static_assert(((!std::is_lvalue_reference_v<P> || std::is_const_v<std::remove_reference_t<P>>)&&...),
                    "an argument that the operation changes would be lost");
      return [function](void* object, Arguments arguments, OperationName const& name, Signature const& signature) {
         return invoke<P...>(function, object, arguments, name, signature, std::index_sequence_for<P...>());
      };
   }
   template <class... P, class Function, std::size_t... I>
   static std::any invoke(Function const& function, void* object, [[maybe_unused]] Arguments arguments,
                          [[maybe_unused]] OperationName const& name, [[maybe_unused]] Signature const& signature,
                          std::index_sequence<I...>) {
      std::tuple<std::remove_cvref_t<P>...> values{
          detail::argumentAs<std::remove_cvref_t<P>>(arguments[I], name, {I, signature.parameters[I].name})...};
      using R = std::invoke_result_t<Function const&, void*, P...>;
      if constexpr (std::is_void_v<R>) {
         function(object, static_cast<P&&>(std::get<I>(values))...);
         return {};
      } else if constexpr (std::same_as<std::decay_t<R>, std::string_view>) {
         return String(function(object, static_cast<P&&>(std::get<I>(values))...));
      } else {
         return function(object, static_cast<P&&>(std::get<I>(values))...);
      }
   }

   // What the description says.
   void description() {
      type_.constructorIs(callable<>(constructorName, Access::none, "The default value.", [](void*) { return T(); }));
      if constexpr (descriptionOf<T>.size != 0) {
         constructorFrom<T>([](T value) { return value; }, "From all attributes.");
         forEachAttribute<T>([this](auto const& at) {
            if constexpr (std::remove_cvref_t<decltype(at)>::isCollection) {
               this->collection(at.name, at.member, at.line);
            } else {
               this->attribute(at.name, at.member, at.line);
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
          .string = stringOf(),
          .allocations = nullptr,
          .isEnumeration = std::is_enum_v<T>,
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
          .string = nullptr,
          .allocations = [] { return allocationsOf<T>.load(std::memory_order_relaxed); },
          .isEnumeration = false,
      };
   }
   static auto stringOf() -> std::string_view (*)(void const*) {
      if constexpr (std::convertible_to<T const&, std::string_view>) {
         return [](void const* object) -> std::string_view { return *static_cast<T const*>(object); };
      } else {
         return nullptr;
      }
   }

   TypeInfo& type_;
};

}  // namespace Zam
