// Scope objects for the resources of COM: the apartment of a thread, interfaces, strings and
// values.
//
// Use of an empty pointer, and lack of memory for a string, raise _com_error, which is not a
// standard exception.

#ifndef DEVICEID_HARDWARE_COM_RESOURCES_H_
#define DEVICEID_HARDWARE_COM_RESOURCES_H_

#include "platform/windows_api.h"

namespace system_info {

// Enters the multithreaded apartment for the length of a scope. If the host chose the other kind of
// apartment, the thread stays in it, and COM counts as unusable.
class ComInitGuard {
 public:
  ComInitGuard() : code_(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
  ComInitGuard(const ComInitGuard&) = delete;
  ComInitGuard& operator=(const ComInitGuard&) = delete;
  ~ComInitGuard() {
    if (usable()) CoUninitialize();
  }

  bool usable() const { return code_ >= 0; }
  HRESULT code() const { return code_; }

 private:
  HRESULT code_;
};

// Owns one reference. Use of an empty holder raises E_POINTER.
template <typename Interface>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(const ComPtr&) = delete;
  ComPtr& operator=(const ComPtr&) = delete;
  ~ComPtr() {
    if (interface_ != nullptr) interface_->Release();
  }

  Interface* operator->() const {
    if (interface_ == nullptr) _com_issue_error(E_POINTER);
    return interface_;
  }
  Interface* get() const { return interface_; }

  // The address for the reference that a call returns. The holder must be empty.
  Interface** receive() { return &interface_; }

 private:
  Interface* interface_ = nullptr;
};

// A counted string for COM. Raises E_OUTOFMEMORY if it cannot be allocated.
class Bstr {
 public:
  explicit Bstr(const wchar_t* text) : string_(SysAllocString(text)) {
    if (string_ == nullptr) _com_issue_error(E_OUTOFMEMORY);
  }
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;
  ~Bstr() { SysFreeString(string_); }

  BSTR get() const { return string_; }

 private:
  BSTR string_;
};

// A value that COM fills in and the destructor clears.
class ScopedVariant {
 public:
  ScopedVariant() { VariantInit(&value_); }
  ScopedVariant(const ScopedVariant&) = delete;
  ScopedVariant& operator=(const ScopedVariant&) = delete;
  ~ScopedVariant() { VariantClear(&value_); }

  VARIANT* receive() { return &value_; }
  bool is_string() const { return value_.vt == VT_BSTR; }
  BSTR string() const { return value_.bstrVal; }

 private:
  VARIANT value_;
};

}  // namespace system_info

#endif  // DEVICEID_HARDWARE_COM_RESOURCES_H_
