// Native objects that Java holds by their address.
#pragma once

#include <jni.h>

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include <tessel/NYXException.h>
#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/Synchronize.h>

namespace tessel::internal::jni {

// The live objects of one kind. A number that Java passes is looked up before it is taken for an address: one that was
// closed, was never given out or names an object of another kind is refused. Any thread.
//
// Object is what the address is of, Holder what owns it and has a public member `object` that points to it.
template <class Object, class Holder>
class HandleTable {
 public:
  // An object from make() whose address is not that of one closed lately: a stale handle then meets nobody instead of
  // a stranger.
  template <class Make>
  std::unique_ptr<Object> newObject(Make make) {
    std::vector<std::unique_ptr<Object>> passedOver;
    for (;;) {
      std::unique_ptr<Object> object(make());
      if (!wasClosedLately(handleOf(*object))) return object;
      passedOver.push_back(std::move(object));
    }
  }

  jlong add(std::shared_ptr<Holder> holder) {
    const Synchronize guard(&lock_);
    const jlong handle = handleOf(*holder->object);
    holders_[handle] = std::move(holder);
    return handle;
  }

  // Throws NYXException when the handle is not a live object's.
  std::shared_ptr<Holder> find(jlong handle) {
    const Synchronize guard(&lock_);
    return at(handle)->second;
  }

  // As find; the handle is refused from now on.
  std::shared_ptr<Holder> take(jlong handle) {
    const Synchronize guard(&lock_);
    const auto found = at(handle);
    std::shared_ptr<Holder> holder = std::move(found->second);
    holders_.erase(found);
    closed_.push_back(handle);
    if (closed_.size() > kRemembered) closed_.pop_front();
    return holder;
  }

 private:
  using Holders = std::map<jlong, std::shared_ptr<Holder>>;
  static constexpr std::size_t kRemembered = 64;

  static jlong handleOf(const Object& object) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): Java has no pointers
    return reinterpret_cast<jlong>(&object);
  }

  bool wasClosedLately(jlong handle) {
    const Synchronize guard(&lock_);
    return std::find(closed_.begin(), closed_.end(), handle) != closed_.end();
  }

  // A mistake of the Java code, so the text is not translated.
  typename Holders::iterator at(jlong handle) {
    const auto found = holders_.find(handle);
    if (found == holders_.end()) throw NYXException("the native handle is not that of an open object");
    return found;
  }

  NYXThreadSyncImpl lock_;
  Holders holders_;
  std::deque<jlong> closed_;
};

}  // namespace tessel::internal::jni
