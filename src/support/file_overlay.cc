#include "support/file_overlay.h"

#include <utility>

namespace system_info {
namespace {

thread_local FileOverlay* present = nullptr;

}  // namespace

FileOverlay* PresentFileOverlay() { return present; }

FileOverlay* SetFileOverlay(FileOverlay* overlay) { return std::exchange(present, overlay); }

}  // namespace system_info
