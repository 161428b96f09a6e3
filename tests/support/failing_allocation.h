// Memory and descriptors that run out when a test says so.

#ifndef DEVICEID_TESTS_SUPPORT_FAILING_ALLOCATION_H_
#define DEVICEID_TESTS_SUPPORT_FAILING_ALLOCATION_H_

namespace system_info {

// While it lives, the allocation number `nth`, counted from 1, and all later ones on this thread
// fail if `lasting` is set, else only that one.
class FailingNew {
 public:
  FailingNew(int nth, bool lasting);
  ~FailingNew();

  bool failed() const;
};

// The same for malloc, as far as the library and the tests themselves call it.
class FailingMalloc {
 public:
  explicit FailingMalloc(int nth);
  ~FailingMalloc();
};

// While it lives, the call number `nth` of those that can have that error, counted from 1, fails
// with `error` on this thread: EMFILE as no descriptor is left to open a file or a socket, ENOMEM
// as either is read, EINTR as a file is opened or either is read.
class FailingCall {
 public:
  FailingCall(int nth, int error);
  ~FailingCall();

  bool failed() const;
};

}  // namespace system_info

#endif  // DEVICEID_TESTS_SUPPORT_FAILING_ALLOCATION_H_
