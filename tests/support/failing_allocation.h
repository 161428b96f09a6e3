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

// While it lives, the open number `nth` on this thread, counted from 1, fails with `error`: a file
// opened with openat, or a socket.
class FailingOpen {
 public:
  FailingOpen(int nth, int error);
  ~FailingOpen();

  bool failed() const;
};

}  // namespace system_info

#endif  // DEVICEID_TESTS_SUPPORT_FAILING_ALLOCATION_H_
