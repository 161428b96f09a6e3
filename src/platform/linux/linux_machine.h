// The real computer: what the kernel and the system's files tell of it.
//
// Everything is read below a root folder, so that a made-up tree can stand for a computer. A value
// that cannot be read, is empty, is all zeros where it is a UUID, or is new at each boot, is null.
// Serial numbers that only root may read are null for everybody else. Drive C: stands for the file
// system at "/".

#ifndef DEVICEID_PLATFORM_LINUX_LINUX_MACHINE_H_
#define DEVICEID_PLATFORM_LINUX_LINUX_MACHINE_H_

#include "platform/linux/linux_kernel.h"
#include "platform/linux/machine.h"

namespace system_info {

class LinuxMachine final : public Machine {
 public:
  // `root` is "/" for the computer itself.
  explicit LinuxMachine(const std::string& root, KernelAnswers kernel = AskKernel());

  // Reads everything at once, so that all values are of the same moment.
  std::unique_ptr<Hardware> LookAtHardware() override;
  std::wstring WindowsFolder() override;
  // Both are made if they are not there.
  std::optional<std::string> CommonRoot() override;
  std::optional<std::string> UserRoot() override;
  std::int64_t PresentTicks() override;

 private:
  std::string root_;  // Without a separator at the end: empty for "/".
  KernelAnswers kernel_;
};

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_LINUX_MACHINE_H_
