// The real thing. Wine reads the serial numbers of its PC anew at every query.

#include <winsock2.h>

#include <windows.h>

#include <process.h>
#include <shlobj.h>
#include <tlhelp32.h>
#include <wbemcli.h>
#include <winternl.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "pc/pc.h"
#include "support/foreseen_call.h"

std::string system_info::StatusText(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data);
  std::string text = std::to_string(data.dwFileAttributes);
  for (const FILETIME& time : {data.ftCreationTime, data.ftLastWriteTime}) {
    text += ' ' + std::to_string(time.dwHighDateTime) + ' ' + std::to_string(time.dwLowDateTime);
  }
  return text;
}

namespace pc {
namespace {

const std::string kNetClass = "{4d36e972-e325-11ce-bfc1-08002be10318}";

template <typename Function>
Function Find(const char* module, const char* name) {
  return reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(LoadLibraryA(module), name)));
}

void SetRegistry(const std::string& key, const char* name, const std::string& value) {
  RegSetKeyValueA(HKEY_LOCAL_MACHINE, ("System\\CurrentControlSet\\" + key).c_str(), name, REG_SZ,
                  value.c_str(), static_cast<DWORD>(value.size() + 1));
}

void SetPciAdapter(const std::string& instance_id) {
  RegDeleteTreeA(HKEY_LOCAL_MACHINE, "System\\CurrentControlSet\\Enum\\PCI");
  if (instance_id.empty()) return;
  const std::string device = "Enum\\PCI\\VEN_8086&DEV_100E\\0000";
  SetRegistry(device, "ClassGUID", kNetClass);
  SetRegistry(device, "Driver", kNetClass + "\\0001");
  SetRegistry(device, "DeviceDesc", "The name that comes second");
  SetRegistry(device, "FriendlyName", "PCI adapter");
  SetRegistry("Control\\Class\\" + kNetClass + "\\0001", "NetCfgInstanceId", instance_id);
}

std::string Enter(const std::string& apartment) {
  const bool single = apartment == "sta";
  if (!single && apartment != "mta") throw std::invalid_argument("no apartment: " + apartment);
  return std::to_string(
      CoInitializeEx(nullptr, single ? COINIT_APARTMENTTHREADED : COINIT_MULTITHREADED));
}

// What comes of making a COM object.
std::string UseCom() {
  IUnknown* object = nullptr;
  const HRESULT result = CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER,
                                          IID_IUnknown, reinterpret_cast<void**>(&object));
  if (object != nullptr) object->Release();
  return std::to_string(result);
}

std::string Leave() {
  const std::string inside = UseCom();
  CoUninitialize();
  return inside + ", then " + UseCom();
}

// What this process has, by the system's own tables: its counter of handles is a stub in Wine.
std::string CountResources() {
  struct Handle {
    USHORT process, others[3];
    void* object;
    ULONG access;
  };
  static struct {
    ULONG count;
    Handle handles[1 << 15];
  } table;
  static std::vector<DWORD> slots(2000);
  slots.clear();
  const auto query = Find<decltype(&NtQuerySystemInformation)>("ntdll", "NtQuerySystemInformation");
  constexpr auto kSystemHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(16);
  query(kSystemHandleInformation, &table, sizeof(table), nullptr);
  const auto handles = std::count_if(
      table.handles, table.handles + table.count,
      [](const Handle& handle) { return handle.process == (GetCurrentProcessId() & 0xffff); });
  int threads = 0;
  THREADENTRY32 thread = {};
  thread.dwSize = sizeof(thread);
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  for (BOOL more = Thread32First(snapshot, &thread); more; more = Thread32Next(snapshot, &thread)) {
    threads += thread.th32OwnerProcessID == GetCurrentProcessId();
  }
  CloseHandle(snapshot);
  for (DWORD slot = TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = TlsAlloc()) {
    slots.push_back(slot);
  }
  for (const DWORD slot : slots) TlsFree(slot);
  int blocks = 0;
  // The C runtime has a heap of its own.
  HANDLE heaps[16];
  const DWORD heap_count = GetProcessHeaps(16, heaps);
  for (DWORD heap = 0; heap < heap_count; ++heap) {
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(heaps[heap], &entry)) blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
  }
  return std::to_string(handles) + " handles, " + std::to_string(threads) + " threads, " +
         std::to_string(slots.size()) + " free slots, " + std::to_string(blocks) + " blocks";
}

void Unload() {
  while (FreeLibrary(GetModuleHandleA("deviceid.dll"))) continue;
}

std::string CallAndUnload() {
  char id[64];
  const auto get = Find<decltype(&::GetHardwareId)>("deviceid.dll", "GetHardwareId");
  const int result = get(id, sizeof(id), "1.5", nullptr, 0);
  FreeLibrary(GetModuleHandleA("deviceid.dll"));
  if (result != 0) return "result " + std::to_string(result);
  return GetModuleHandleA("deviceid.dll") != nullptr ? "stays loaded" : "";
}

std::string Cycle(int times) {
  Unload();
  // Each of them has a block of its own already.
  std::string before(99, ' '), after(99, ' ');
  // What the system itself loads and keeps comes with the first calls.
  constexpr int kFirstCalls = 10;
  for (int i = 0; i < times + kFirstCalls; ++i) {
    if (i == kFirstCalls) before = CountResources();
    const std::string failure = CallAndUnload();
    if (!failure.empty()) return failure;
  }
  after = CountResources();
  CreateEventA(nullptr, FALSE, FALSE, nullptr);
  if (CountResources() == after) return "a leak would not show";
  return after == before ? "nothing left" : before + ", then " + after;
}

// The name of the DLL ends otherwise in 64 bits.
std::string LoadBeside(const std::string& dll) {
  Unload();
  const std::string name = dll + (sizeof(void*) == 4 ? "_dw2-1.dll" : "_seh-1.dll");
  return LoadLibraryA(name.c_str()) != nullptr ? "loaded" : "not there";
}

Arguments task_of_threads;
std::atomic<int> failures;

DWORD WINAPI RunThread(void* /*unused*/) {
  // Wine's WMI crashes when threads use it at the same time; in such an apartment none is used.
  if (task_of_threads.at(1) == "sta") CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  failures += CountFailures(task_of_threads);
  return 0;
}

std::string RunThreads(const Arguments& arguments) {
  task_of_threads.assign(arguments.begin() + 1, arguments.end());
  std::vector<HANDLE> threads(std::stoul(arguments.at(0)));
  for (HANDLE& thread : threads) thread = CreateThread(nullptr, 0, RunThread, nullptr, 0, nullptr);
  WaitForMultipleObjects(static_cast<DWORD>(threads.size()), threads.data(), TRUE, INFINITE);
  return std::to_string(failures);
}

}  // namespace

Library TheLibrary() {
  return {Find<decltype(&::GetHardwareId)>("deviceid.dll", "GetHardwareId"),
          Find<decltype(&::RecheckHardwareId)>("deviceid.dll", "RecheckHardwareId"),
          Find<decltype(&::GetHardwareIdMod)>("deviceid.dll", "GetHardwareIdMod"),
          Find<decltype(&::GetHardwareIdEx)>("deviceid.dll", "GetHardwareIdEx"),
          Find<decltype(&::GetHIDVersion)>("deviceid.dll", "GetHIDVersion")};
}

std::string Root(bool common) {
  char folder[MAX_PATH] = "";
  SHGetFolderPathA(nullptr, common ? CSIDL_COMMON_APPDATA : CSIDL_APPDATA, nullptr, 0, folder);
  return folder;
}

void Renew() {
  for (const bool common : {true, false}) {
    std::filesystem::remove_all(Root(common) + "/BrindleQuayWorks");
    std::filesystem::remove_all(Root(common) + "/Fennel");
  }
  SetPart("product", "PF0XYZ");
  SetPart("board", "BOARD7");
  SetPart("pci", "");
}

void SetPart(const std::string& part, const std::string& value) {
  if (part == "pci") return SetPciAdapter(value);
  if (part != "product" && part != "board") throw std::invalid_argument("no such part: " + part);
  std::ofstream("Z:/sys/class/dmi/id/" + part + "_serial", std::ios::binary) << value << '\n';
}

bool PlayOther(const std::string& verb, const Arguments& arguments, std::string& answer) {
  // The run has no network from its beginning.
  if (verb == "lose" && arguments.at(0) == "network") return true;
  if (verb == "leave") {
    answer = Leave();
  } else if (verb == "enter") {
    answer = Enter(arguments.at(0));
  } else if (verb == "cycle") {
    answer = Cycle(std::stoi(arguments.at(0)));
  } else if (verb == "beside") {
    answer = LoadBeside(arguments.at(0));
  } else if (verb == "threads") {
    answer = RunThreads(arguments);
  } else {
    return false;
  }
  return true;
}

int CountCollections() { return -1; }

void StartCounting() {}

bool IsForeseeable() { return true; }

int RunProcesses(int processes, int threads, const Arguments& task) {
  std::vector<intptr_t> started;
  for (int i = 0; i < processes; ++i) {
    started.push_back(_spawnl(_P_NOWAIT, "player.exe", "player.exe", "threads",
                              std::to_string(threads).c_str(), task.at(0).c_str(),
                              task.at(1).c_str(), task.at(2).c_str(), nullptr));
  }
  int sum = 0;
  for (const intptr_t process : started) {
    int status = -1;
    _cwait(&status, process, 0);
    sum += std::abs(status);
  }
  return sum;
}

}  // namespace pc
