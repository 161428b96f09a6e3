#include "platform/linux/com_api.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/layer_state.h"

using system_info::Counted;
using system_info::Hardware;
using system_info::HardwareOfThread;
using system_info::Live;
using system_info::MistypedValue;
using system_info::PlatformCall;
using system_info::PresentMachine;
using system_info::ScriptedFailure;
using system_info::Subject;
using system_info::UnlessOutOfMemory;
using system_info::WmiRow;
using system_info::WmiValue;

namespace {

enum class Apartment { kNone, kMultithreaded, kSingleThreaded };

// A snapshot of the hardware, taken when this thread entered COM.
struct Look {
  std::unique_ptr<Hardware> hardware;
  Look* of_outer_entry;
  Counted counted{Live().looks_at_hardware};
};

// No member has a constructor or destructor: a thread's state must exist before memory runs out.
thread_local Look* latest_look = nullptr;
thread_local Apartment apartment = Apartment::kNone;
thread_local int apartment_entries = 0;
thread_local int objects_of_thread = 0;

std::optional<HRESULT> ScriptedCode(PlatformCall call, const std::wstring& subject = {}) {
  const auto code = ScriptedFailure(call, Subject(subject));
  if (!code) return std::nullopt;
  return static_cast<HRESULT>(*code);
}

// A COM string begins after its count.
struct StringHeader {
  std::size_t length;
};

BSTR MakeString(const wchar_t* text, std::size_t length) {
  void* memory = std::malloc(sizeof(StringHeader) + (length + 1) * sizeof(wchar_t));
  if (memory == nullptr) return nullptr;
  static_cast<StringHeader*>(memory)->length = length;
  auto* string = reinterpret_cast<wchar_t*>(static_cast<StringHeader*>(memory) + 1);
  std::wmemcpy(string, text, length);
  string[length] = L'\0';
  ++Live().com_strings;
  return string;
}

std::wstring Text(BSTR string) {
  return string == nullptr ? std::wstring() : std::wstring(string, SysStringLen(string));
}

// An object with one reference, which belongs to its creator. Objects stay on the thread that made
// them.
template <typename Interface>
class Object : public Interface {
 public:
  Object() { ++objects_of_thread; }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() { --objects_of_thread; }

  ULONG Release() override {
    delete this;
    return 0;
  }

 private:
  Counted counted_{Live().com_objects};
};

class Row final : public Object<IWbemClassObject> {
 public:
  Row(WmiRow row, std::wstring property) : row_(std::move(row)), property_(std::move(property)) {}

  HRESULT Get(const wchar_t* name, LONG flags, VARIANT* value, CIMTYPE* type,
              LONG* flavor) override {
    if (flags != 0 || value == nullptr || value->vt != VT_EMPTY || type == nullptr ||
        flavor != nullptr) {
      return WBEM_E_INVALID_PARAMETER;
    }
    return UnlessOutOfMemory(E_OUTOFMEMORY, [&] {
      if (const auto code = ScriptedCode(PlatformCall::kGet, name)) return *code;
      const auto entry = row_.find(name);
      if (name != property_ || entry == row_.end()) return WBEM_E_NOT_FOUND;
      return Fill(entry->second, value, type);
    });
  }

 private:
  static HRESULT Fill(const WmiValue& source, VARIANT* value, CIMTYPE* type) {
    *type = CIM_STRING;
    value->vt = VT_NULL;
    if (const auto* mistyped = std::get_if<MistypedValue>(&source)) {
      const HRESULT code =
          std::visit([&](const auto& inner) { return Fill(inner, value, type); }, mistyped->value);
      *type = *type == CIM_STRING ? CIM_SINT32 : CIM_STRING;
      return code;
    }
    if (const auto* number = std::get_if<std::int32_t>(&source)) {
      *type = CIM_SINT32;
      value->vt = VT_I4;
      value->lVal = *number;
    } else if (const auto* text = std::get_if<std::wstring>(&source)) {
      value->bstrVal = MakeString(text->data(), text->size());
      if (value->bstrVal == nullptr) return E_OUTOFMEMORY;
      value->vt = VT_BSTR;
    }
    return S_OK;
  }

  WmiRow row_;
  std::wstring property_;
};

class Rows final : public Object<IEnumWbemClassObject> {
 public:
  Rows(std::wstring property, std::wstring class_text)
      : property_(std::move(property)),
        class_text_(std::move(class_text)),
        rows_(HardwareOfThread()->QueryWmi(class_text_)) {}

  HRESULT Next(LONG timeout, ULONG count, IWbemClassObject** objects, ULONG* returned) override {
    if (timeout != WBEM_INFINITE || count != 1) return WBEM_E_INVALID_PARAMETER;
    *returned = next_ < rows_.size() ? 1 : 0;
    return UnlessOutOfMemory(E_OUTOFMEMORY, [&] {
      if (const auto code = ScriptedCode(PlatformCall::kNext, class_text_)) return *code;
      if (*returned == 0) return S_FALSE;
      *objects = new Row(rows_[next_++], property_);
      return S_OK;
    });
  }

 private:
  std::wstring property_;
  std::wstring class_text_;
  std::vector<WmiRow> rows_;
  std::size_t next_ = 0;
};

class Services final : public Object<IWbemServices> {
 public:
  void AllowQueries() { security_set_ = true; }

  HRESULT ExecQuery(BSTR language, BSTR query, LONG flags, IWbemContext* context,
                    IEnumWbemClassObject** rows) override {
    if (!security_set_) return E_ACCESSDENIED;
    return UnlessOutOfMemory(E_OUTOFMEMORY,
                             [&] { return Run(language, query, flags, context, rows); });
  }

 private:
  static HRESULT Run(BSTR language, BSTR query, LONG flags, IWbemContext* context,
                     IEnumWbemClassObject** rows) {
    if (Text(language) != L"WQL") return WBEM_E_INVALID_QUERY_TYPE;
    if (flags != (WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY) || context != nullptr) {
      return WBEM_E_INVALID_PARAMETER;
    }
    const std::wstring select = L"SELECT ";
    const std::wstring from = L" FROM ";
    const std::wstring text = Text(query);
    const std::size_t from_position = text.find(from);
    if (!text.starts_with(select) || from_position == std::wstring::npos) {
      return WBEM_E_INVALID_QUERY;
    }
    const std::wstring class_text = text.substr(from_position + from.size());
    if (const auto code = ScriptedCode(PlatformCall::kExecQuery, class_text)) return *code;
    *rows = new Rows(text.substr(select.size(), from_position - select.size()), class_text);
    return S_OK;
  }

  bool security_set_ = false;
};

class Locator final : public Object<IWbemLocator> {
 public:
  HRESULT ConnectServer(BSTR resource, BSTR user, BSTR password, BSTR locale, LONG flags,
                        BSTR authority, IWbemContext* context, IWbemServices** services) override {
    if (std::wcscmp(resource, L"ROOT\\CIMV2") != 0) return WBEM_E_INVALID_NAMESPACE;
    if (user != nullptr || password != nullptr || locale != nullptr || authority != nullptr ||
        context != nullptr || flags != WBEM_FLAG_CONNECT_USE_MAX_WAIT) {
      return WBEM_E_INVALID_PARAMETER;
    }
    if (const auto code = ScriptedCode(PlatformCall::kConnectServer)) return *code;
    *services = new (std::nothrow) Services;
    return *services != nullptr ? S_OK : E_OUTOFMEMORY;
  }
};

void LeaveApartment() {
  --Live().apartment_entries;
  if (--apartment_entries > 0) return;
  apartment = Apartment::kNone;
  Live().objects_after_com += objects_of_thread;
}

void EnterApartment(Apartment kind) {
  apartment = kind;
  ++apartment_entries;
  ++Live().apartment_entries;
}

}  // namespace

BSTR SysAllocString(const wchar_t* text) {
  if (text == nullptr) return nullptr;
  return UnlessOutOfMemory<BSTR>(nullptr, [&]() -> BSTR {
    if (ScriptedFailure(PlatformCall::kSysAllocString, Subject(text))) return nullptr;
    return MakeString(text, std::wcslen(text));
  });
}

void SysFreeString(BSTR string) {
  if (string == nullptr) return;
  --Live().com_strings;
  std::free(reinterpret_cast<StringHeader*>(string) - 1);
}

UINT SysStringLen(BSTR string) {
  if (string == nullptr) return 0;
  return static_cast<UINT>((reinterpret_cast<StringHeader*>(string) - 1)->length);
}

void VariantInit(VARIANT* value) {
  value->vt = VT_EMPTY;
  value->bstrVal = nullptr;
}

HRESULT VariantClear(VARIANT* value) {
  if (value->vt == VT_BSTR) SysFreeString(value->bstrVal);
  VariantInit(value);
  return S_OK;
}

// NOLINTNEXTLINE(bugprone-reserved-identifier)
void _com_issue_error(HRESULT code) { throw _com_error(code); }

HRESULT CoInitializeEx(void* reserved, DWORD model) {
  if (reserved != nullptr || model != COINIT_MULTITHREADED) return E_INVALIDARG;
  if (const auto code = ScriptedCode(PlatformCall::kCoInitializeEx)) return *code;
  if (apartment == Apartment::kSingleThreaded) return RPC_E_CHANGED_MODE;
  latest_look = new Look{PresentMachine().LookAtHardware(), latest_look};
  EnterApartment(Apartment::kMultithreaded);
  return apartment_entries == 1 ? S_OK : S_FALSE;
}

void CoUninitialize() {
  const std::unique_ptr<Look> ended(latest_look);
  latest_look = ended->of_outer_entry;
  LeaveApartment();
}

HRESULT CoCreateInstance(const GUID& class_id, IUnknown* outer, DWORD context,
                         const GUID& interface_id, void** instance) {
  if (apartment != Apartment::kMultithreaded) return CO_E_NOTINITIALIZED;
  if (class_id != CLSID_WbemLocator || interface_id != IID_IWbemLocator) {
    return REGDB_E_CLASSNOTREG;
  }
  if (outer != nullptr || context != CLSCTX_INPROC_SERVER) return E_INVALIDARG;
  if (const auto code = ScriptedCode(PlatformCall::kCoCreateInstance)) return *code;
  *instance = static_cast<IWbemLocator*>(new (std::nothrow) Locator);
  return *instance != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT CoSetProxyBlanket(IUnknown* proxy, DWORD authentication, DWORD authorization,
                          wchar_t* principal, DWORD authentication_level, DWORD impersonation_level,
                          void* identity, DWORD capabilities) {
  auto* services = dynamic_cast<Services*>(proxy);
  if (services == nullptr || authentication != RPC_C_AUTHN_WINNT ||
      authorization != RPC_C_AUTHZ_NONE || principal != nullptr ||
      authentication_level != RPC_C_AUTHN_LEVEL_CALL ||
      impersonation_level != RPC_C_IMP_LEVEL_IMPERSONATE || identity != nullptr ||
      capabilities != EOAC_NONE) {
    return E_INVALIDARG;
  }
  if (const auto code = ScriptedCode(PlatformCall::kCoSetProxyBlanket)) return *code;
  services->AllowQueries();
  return S_OK;
}

namespace system_info {

Hardware* HardwareOfThread() {
  return latest_look == nullptr ? nullptr : latest_look->hardware.get();
}

void EnterSingleThreadedApartment() { EnterApartment(Apartment::kSingleThreaded); }

void LeaveSingleThreadedApartment() { LeaveApartment(); }

int ApartmentEntries() { return apartment_entries; }

}  // namespace system_info
