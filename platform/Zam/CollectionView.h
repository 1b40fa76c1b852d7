#pragma once

#include "Zam/Collection.h"
#include "Zam/CollectionPlace.h"
#include "Zam/TypeArgument.h"
#include "Zam/TypeUse.h"

#include <any>
#include <memory>
#include <optional>
#include <utility>

namespace Zam {

// A collection as the runtime hands it over: its size, its elements by key and in its order, without copying it. A
// view holds the entity that it was read from; of a value it is good while that value stays where it is.
//
// A walk may meet changes. In a collection with an order, by key or by place, it goes on behind the last element that
// it gave. A hash map or hash set that has changed ends its walk with a TypeError. Another thread's changes need the
// activity lock around each step.
class KIV_EXPORT CollectionView {
 public:
   // Of a set the value is empty; of a list the key is the place.
   struct Element {
      std::any key;
      std::any value;
   };

   class KIV_EXPORT Walk {
    public:
      // Nothing behind the last one.
      std::optional<Element> next() { return cursor_->next(); }

    private:
      friend class CollectionView;
      struct Cursor {
         virtual ~Cursor();
         virtual std::optional<Element> next() = 0;
      };
      explicit Walk(std::unique_ptr<Cursor> cursor) noexcept : cursor_(std::move(cursor)) {}

      std::unique_ptr<Cursor> cursor_;
   };

   // `owner` is held with the view.
   template <Collection M>
   static CollectionView of(M const& collection, Ptr<PtrInterface const> owner) {
      return CollectionView(std::make_shared<SourceOf<M>>(collection, std::move(owner)));
   }
   template <Collection M>
   static CollectionView owning(M collection) {
      return CollectionView(std::make_shared<SourceOf<M>>(std::move(collection)));
   }

   TypeUse use() const { return source_->use(); }
   std::size_t size() const { return source_->size(); }
   // The value under that key, the element of a set itself; empty when there is none.
   std::any find(std::any const& key) const { return source_->find(key); }
   Walk walk() const { return Walk(source_->walk(source_)); }
   // What is seen; null when that is no M.
   template <class M>
   M const* as() const noexcept {
      auto const* const same = dynamic_cast<SourceOf<M> const*>(source_.get());
      return same != nullptr ? &same->collection : nullptr;
   }

 private:
   struct Source {
      virtual ~Source();
      virtual TypeUse use() const = 0;
      virtual std::size_t size() const = 0;
      virtual std::any find(std::any const& key) const = 0;
      virtual std::unique_ptr<Walk::Cursor> walk(std::shared_ptr<Source const> const& self) const = 0;
   };
   template <class M>
   struct SourceOf;
   template <class M>
   struct CursorOf;

   explicit CollectionView(std::shared_ptr<Source const> source) noexcept : source_(std::move(source)) {}

   std::shared_ptr<Source const> source_;
};

template <class M>
struct CollectionView::SourceOf final : Source {
   using Key = typename detail::CollectionParts<M>::Key;

   SourceOf(M const& seen, Ptr<PtrInterface const> holder) : owner(std::move(holder)), collection(seen) {}
   explicit SourceOf(M&& moved) : own(std::move(moved)), collection(*own) {}

   TypeUse use() const override { return TypeUse::of<M>(); }
   std::size_t size() const override { return collection.size(); }
   std::any find(std::any const& key) const override {
      auto const* const found =
          detail::foundIn(collection, detail::argumentAs<Key>(key, {"collection", "find"}, {0, "key"}));
      return found != nullptr ? std::any(*found) : std::any();
   }
   std::unique_ptr<Walk::Cursor> walk(std::shared_ptr<Source const> const& self) const override {
      return std::make_unique<CursorOf<M>>(self, collection);
   }

   Ptr<PtrInterface const> owner;
   std::optional<M> own;
   M const& collection;
};

template <class M>
struct CollectionView::CursorOf final : Walk::Cursor {
   CursorOf(std::shared_ptr<Source const> source, M const& walked)
       : held(std::move(source)),
         collection(walked),
         place(walked) {}

   std::optional<Element> next() override {
      auto const* const element = place.next(collection);
      if (element == nullptr) {
         return std::nullopt;
      }
      if constexpr (requires { place.key(); }) {
         return Element{place.key(), *element};
      } else if constexpr (KeyedCollection<M>) {
         return Element{element->key, element->value};
      } else {
         return Element{*element, {}};
      }
   }

   std::shared_ptr<Source const> held;
   M const& collection;
   Place<M> place;
};

// What an argument that is a view of an M shows; null for any other.
template <Collection M>
M const* detail::seenIn(std::any const& argument) {
   auto const* const view = std::any_cast<CollectionView>(&argument);
   return view != nullptr ? view->as<M>() : nullptr;
}

template <Collection M>
M detail::collectionOf(Elements const& elements) {
   using Parts = CollectionParts<M>;
   constexpr OperationName name{"collection", "element"};
   M made;
   for (auto const& [key, value] : elements.elements) {
      auto converted = argumentAs<typename Parts::Key>(key, name, {0, "key"});
      if constexpr (SetCollection<M>) {
         made.insert(std::move(converted));
      } else {
         elementIs(made, std::move(converted), argumentAs<typename Parts::Value>(value, name, {1, "value"}));
      }
   }
   return made;
}

}  // namespace Zam
