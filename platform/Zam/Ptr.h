#pragma once

#include "Zam/Export.h"
#include "Zam/Int.h"

#include <atomic>
#include <compare>
#include <concepts>
#include <cstddef>
#include <functional>
#include <string_view>
#include <utility>

// Reference-counted entities. An entity derives from PtrInterface, lives on the heap and is held through Ptr<T>; it
// goes when its last Ptr goes. Counting is plain arithmetic until threadSafeCountIs(true), then atomic; the mode is
// switched once, before a second thread touches any entity.
namespace Zam {

template <class T>
class Ptr;

class KIV_EXPORT PtrInterface {
 public:
   PtrInterface(PtrInterface const&) = delete;
   PtrInterface& operator=(PtrInterface const&) = delete;

   // The notification hooks, in slot order. The number of observers attached to this entity (entities of this library
   // have none); whether observers are told of changes; and what happens when the last reference goes.
   virtual std::size_t notifieeList() const noexcept;
   virtual void hasNotificationActiveIs(bool active) noexcept;
   virtual void zeroReferencesIs() const noexcept;
   // The qualified type name under which the runtime knows the entity.
   virtual std::string_view fwkType() const noexcept = 0;
   virtual ~PtrInterface();

   bool hasNotificationActive() const noexcept { return notificationActive_; }
   U32 references() const noexcept { return references_.load(std::memory_order_relaxed); }

   static bool threadSafeCount() noexcept { return threadSafe_.load(std::memory_order_relaxed); }
   static void threadSafeCountIs(bool threadSafe) noexcept { threadSafe_.store(threadSafe, std::memory_order_relaxed); }

 protected:
   PtrInterface() noexcept = default;

 private:
   template <class T>
   friend class Ptr;

   void referenceInc() const noexcept {
      if (threadSafeCount()) {
         references_.fetch_add(1, std::memory_order_relaxed);
      } else {
         references_.store(references_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
      }
   }
   void referenceDec() const noexcept {
      U32 before = 0;
      if (threadSafeCount()) {
         before = references_.fetch_sub(1, std::memory_order_acq_rel);
      } else {
         before = references_.load(std::memory_order_relaxed);
         references_.store(before - 1, std::memory_order_relaxed);
      }
      if (before == 1) {
         zeroReferencesIs();
      }
   }

   static std::atomic<bool> threadSafe_;
   mutable std::atomic<U32> references_{0};
   bool notificationActive_ = false;
};

template <class T>
class Ptr {
 public:
   using element_type = T;

   constexpr Ptr() noexcept = default;
   constexpr Ptr(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor): a null handle reads as one
   explicit Ptr(T* object) noexcept : object_(object) { hold(); }
   Ptr(Ptr const& other) noexcept : object_(other.object_) { hold(); }
   Ptr(Ptr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
   template <class U>
   requires std::convertible_to<U*, T*> Ptr(Ptr<U> const& other)
   noexcept : object_(other.get()) {  // NOLINT(google-explicit-constructor): as raw pointers do
      hold();
   }
   ~Ptr() { release(); }

   Ptr& operator=(Ptr other) noexcept {
      std::swap(object_, other.object_);
      return *this;
   }

   T* get() const noexcept { return object_; }
   T& operator*() const noexcept { return *object_; }
   T* operator->() const noexcept { return object_; }
   explicit operator bool() const noexcept { return object_ != nullptr; }

   // Identity, not content: two handles are equal when they hold the same object.
   template <class U>
   bool operator==(Ptr<U> const& other) const noexcept {
      return object_ == other.get();
   }
   bool operator==(std::nullptr_t) const noexcept { return object_ == nullptr; }
   std::strong_ordering operator<=>(Ptr const& other) const noexcept {
      return std::compare_three_way{}(object_, other.object_);
   }

 private:
   void hold() const noexcept {
      if (object_ != nullptr) {
         object_->referenceInc();
      }
   }
   void release() noexcept {
      if (object_ != nullptr) {
         object_->referenceDec();
      }
   }

   T* object_ = nullptr;
};

// How many entities of the type makePtr() has made in this process.
template <class T>
KIV_EXPORT inline std::atomic<U64> allocationsOf{0};

// Makes an entity with notification active, as every factory of the library does, and counts it.
template <class T, class... Args>
Ptr<T> makePtr(Args&&... args) {
   auto& made = allocationsOf<T>;
   if (PtrInterface::threadSafeCount()) {
      made.fetch_add(1, std::memory_order_relaxed);
   } else {
      made.store(made.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
   }
   Ptr<T> object(new T(std::forward<Args>(args)...));
   object->hasNotificationActiveIs(true);
   return object;
}

template <class T, class U>
Ptr<T> ptrCast(Ptr<U> const& other) noexcept {
   return Ptr<T>(dynamic_cast<T*>(other.get()));
}

}  // namespace Zam

template <class T>
struct std::hash<Zam::Ptr<T>> {
   std::size_t operator()(Zam::Ptr<T> const& ptr) const noexcept { return std::hash<T*>{}(ptr.get()); }
};
