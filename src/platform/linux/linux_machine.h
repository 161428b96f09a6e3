// The real computer, read from the kernel and the system's files.
//
// Everything is read below a root folder, so that tests can use a made-up tree. A value is null if
// it cannot be read, is empty, is a UUID of zeros, or is new at each boot. Serial numbers that only
// root may read are null for everybody else. Drive C: is the file system at "/".

#ifndef DEVICEID_PLATFORM_LINUX_LINUX_MACHINE_H_
#define DEVICEID_PLATFORM_LINUX_LINUX_MACHINE_H_

#include "platform/linux/linux_kernel.h"
#include "platform/linux/machine.h"

namespace system_info {

class LinuxMachine final : public Machine {
 public:
  // `root` is "/" for the computer itself.
  explicit LinuxMachine(const std::string& root, KernelAnswers kernel = AskKernel());

  // Reads all values at the same moment.
  std::unique_ptr<Hardware> LookAtHardware() override;
  std::wstring WindowsFolder() override;
  // Both are created if missing.
  std::optional<std::string> CommonRoot() override;
  std::optional<std::string> UserRoot() override;
  std::int64_t PresentTicks() override;

 private:
  std::string root_;  // No trailing separator: empty for "/".
  KernelAnswers kernel_;
};

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_LINUX_MACHINE_H_
