// Wakes at every full second and does nothing: what a second costs at least.
#include <time.h>

int main() {
  for (;;) {
    timespec next{};
    clock_gettime(CLOCK_REALTIME, &next);
    ++next.tv_sec;
    next.tv_nsec = 0;
    clock_nanosleep(CLOCK_REALTIME, TIMER_ABSTIME, &next, nullptr);
  }
}
