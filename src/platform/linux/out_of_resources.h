// The one rule for a process or a system that has run out of descriptors, memory or locks: a value
// that cannot be read now must not count as missing.
//
// The Windows calls for a file or a value never fail in that way, so they have no failure code for
// it. A call that meets such an error ends with an exception: the host can call again, while an id
// that was replaced because a value seemed to be missing is lost for good.

#ifndef DEVICEID_PLATFORM_LINUX_OUT_OF_RESOURCES_H_
#define DEVICEID_PLATFORM_LINUX_OUT_OF_RESOURCES_H_

namespace system_info {

// Throws std::runtime_error if `error` is EMFILE, ENFILE, ENOMEM, ENOBUFS or ENOLCK, and returns
// otherwise. The text of the exception is `what` with the name of the error. Throws std::bad_alloc
// if there is no memory for that text.
void ThrowIfOutOfResources(int error, const char* what);

}  // namespace system_info

#endif  // DEVICEID_PLATFORM_LINUX_OUT_OF_RESOURCES_H_
