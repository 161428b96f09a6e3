#include <gmock/gmock.h>

#include <cstdlib>
#include <ctime>

int main(int argc, char** argv) {
  // Log lines show local time: half an hour keeps minutes from passing for hours.
  setenv("TZ", "TST-05:30", 1);
  tzset();
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
