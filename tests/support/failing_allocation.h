// Memory that runs out when a test says so.

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

}  // namespace system_info

#endif  // DEVICEID_TESTS_SUPPORT_FAILING_ALLOCATION_H_
