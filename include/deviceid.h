/*
 * deviceid: one stable text for the PC that the host application runs on.
 *
 * Five plain functions, for C89 to C++20 and every language that can call C. Any thread may call
 * them, also at the same time, but a call that runs while another one stores an id may return
 * DEVICEID_UNEXPECTED_FAILURE. A thread must not be cancelled inside a call. On Windows do not call
 * from a thread in a single-threaded apartment of COM: there the hardware cannot be read, and a new
 * id is random, with DEVICEID_SUCCESS. The library keeps no pointer to a host's buffer after a call
 * returns, starts no threads and needs no call before or after use. Define DEVICEID_STATIC to link
 * the static library; CMake does so itself.
 */
#ifndef DEVICEID_H
#define DEVICEID_H

#include <stdint.h>

#if defined(_WIN32)
#define DEVICEID_CALL __cdecl
#else
#define DEVICEID_CALL
#endif

#if defined(DEVICEID_STATIC)
#define DEVICEID_API
#elif defined(_WIN32) && defined(DEVICEID_BUILDING_LIBRARY)
#define DEVICEID_API __declspec(dllexport)
#elif defined(_WIN32)
#define DEVICEID_API __declspec(dllimport)
#elif defined(DEVICEID_BUILDING_LIBRARY)
#define DEVICEID_API __attribute__((visibility("default")))
#else
#define DEVICEID_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Result of every function that yields an id. The value 2 is not assigned. */
enum DeviceIdResult {
  /* The whole id and its terminator were copied. The log was copied, truncated if necessary. */
  DEVICEID_SUCCESS = 0,
  /*
   * There is an id, but the id buffer is smaller than the id and its terminator. The buffer holds
   * the start of the id, zero-terminated, or is untouched when its size is 0. The log was copied,
   * truncated if necessary, and the call has stored the id and the record as usual.
   */
  DEVICEID_BUFFER_TOO_SMALL = 1,
  /*
   * A failure with a known reason. The log ends with the reason, or is untouched if there was no
   * memory for a log. The id buffer is untouched, but holds a complete id if format 1.6 failed
   * while saving it.
   */
  DEVICEID_STANDARD_FAILURE = 3,
  /*
   * Any other failure, with id buffer and log as above; or format 2.0 has no valid id to return.
   * Then both buffers are untouched.
   */
  DEVICEID_UNEXPECTED_FAILURE = 4,
  /* The id buffer is a null pointer. Nothing was done. */
  DEVICEID_NO_DEVICE_ID_BUFFER = 5,
  /* The format text is not one of the supported ones. Nothing was done. */
  DEVICEID_UNSUPPORTED_VERSION = 6,
  /* The format text is a null pointer or empty. Nothing was done. */
  DEVICEID_NO_VERSION = 7,
  /*
   * RecheckHardwareId or GetHardwareIdMod was called with a format below 2.0. The log
   * has one line that says so; nothing else was done.
   */
  DEVICEID_NOT_SUPPORTED_WITH_VERSION = 8
};

/* Flags of GetHardwareIdMod, to be combined with |. Other bits are ignored. */
enum DeviceIdFlag {
  /* Compare the hardware with the stored record even if the record is younger than ten days. */
  DEVICEID_SKIP_DATE_CHECK = 1,
  /* Treat the hardware as unreadable where an id is made from it. */
  DEVICEID_FORCE_RANDOM_HID = 2,
  /*
   * Take the hardware ids that are stored and compared from the file "hardware_ids.emulated" in the
   * common folder. The id itself is still made from the real hardware.
   */
  DEVICEID_USE_EMULATED_HARDWARE_IDS = 4
};

/*
 * Buffer sizes in bytes, terminator included. An id buffer of this size takes the id of every
 * format; a log buffer of this size takes the whole log of an ordinary call.
 */
enum DeviceIdSize { DEVICEID_ID_SIZE = 41, DEVICEID_LOG_SIZE = 65536 };

/*
 * Gives the id of this machine in the format `version`.
 *
 * deviceId      receives the id, zero-terminated: 40 characters, or 36 for format "1.0". Not null.
 * deviceIdSize  capacity of `deviceId` in bytes, terminator included; DEVICEID_ID_SIZE always fits.
 * version       "1.0", "1.1", "1.2", "1.4", "1.5", "1.6" or "2.0" exactly, zero-terminated.
 * log           receives the log of this call, zero-terminated, truncated if it does not fit.
 *               May be null; then nothing is logged and `logSize` is ignored.
 * logSize       capacity of `log` in bytes, terminator included. 0 leaves `log` untouched.
 *
 * Returns a DeviceIdResult. All buffers belong to the host; a buffer that is not
 * mentioned with a result stays untouched. A short log buffer never changes the result.
 */
DEVICEID_API int DEVICEID_CALL GetHardwareId(char* deviceId, uint32_t deviceIdSize,
                                             const char* version, char* log, uint32_t logSize);

/*
 * The same as GetHardwareId, with the format as a number: 10, 11, 12, 14, 15, 16 or 20. Any other
 * number is not a format and gives DEVICEID_NO_VERSION (or DEVICEID_NO_DEVICE_ID_BUFFER when
 * `deviceId` is null).
 */
DEVICEID_API int DEVICEID_CALL GetHardwareIdEx(char* deviceId, uint32_t deviceIdSize,
                                               int versionCode, char* log, uint32_t logSize);

/*
 * The same as GetHardwareId for format "2.0", with `flags`, an | of DeviceIdFlag. A supported
 * format below 2.0 gives DEVICEID_NOT_SUPPORTED_WITH_VERSION. In its log lines this function is
 * called GetHardwareIdEmulated.
 */
DEVICEID_API int DEVICEID_CALL GetHardwareIdMod(char* deviceId, uint32_t deviceIdSize,
                                                const char* version, char* log, uint32_t logSize,
                                                uint32_t flags);

/*
 * The same as GetHardwareId for format "2.0", but compares the hardware with the stored record
 * at any age of the record. A supported format below 2.0 gives
 * DEVICEID_NOT_SUPPORTED_WITH_VERSION.
 */
DEVICEID_API int DEVICEID_CALL RecheckHardwareId(char* deviceId, uint32_t deviceIdSize,
                                                 const char* version, char* log, uint32_t logSize);

/*
 * Returns the version of the library as a constant zero-terminated text, for example "2.0.0". It
 * stays valid while the library is loaded and must not be freed. It is not an id format.
 */
DEVICEID_API const char* DEVICEID_CALL GetHIDVersion(void);

#ifdef __cplusplus
}
#endif

#endif /* DEVICEID_H */
