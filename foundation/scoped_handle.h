// One owner for every OS resource the library holds (descriptors, kernel handles, registry keys,
// compiled statements): the handle type and how to release it come from a traits class, as in
// LLVM's ScopedHandle<Traits>.
//
//   struct Traits {
//     using Handle = ...;
//     static Handle Invalid();                 // the "none" value
//     static bool IsValid(Handle handle);      // false for every "none" form the API has
//     static void Close(Handle handle);        // called once, for a valid handle only
//   };
#pragma once

#include <utility>

namespace DE::detail {

template <typename Traits>
class ScopedHandle {
 public:
  using Handle = typename Traits::Handle;

  ScopedHandle() : handle_(Traits::Invalid()) {}
  explicit ScopedHandle(Handle handle) : handle_(handle) {}
  ~ScopedHandle() { Reset(); }

  ScopedHandle(ScopedHandle&& other) noexcept : handle_(other.Release()) {}
  ScopedHandle& operator=(ScopedHandle&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  ScopedHandle(const ScopedHandle&) = delete;
  ScopedHandle& operator=(const ScopedHandle&) = delete;

  Handle Get() const { return handle_; }
  bool IsValid() const { return Traits::IsValid(handle_); }
  explicit operator bool() const { return IsValid(); }

  // Gives the handle up without closing it.
  Handle Release() { return std::exchange(handle_, Traits::Invalid()); }
  // Closes the held handle (if any) and holds `handle` instead.
  void Reset(Handle handle = Traits::Invalid()) {
    const Handle old = std::exchange(handle_, handle);
    if (Traits::IsValid(old)) Traits::Close(old);
  }

 private:
  Handle handle_;
};

}  // namespace DE::detail
