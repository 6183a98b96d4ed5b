// Which thread the toolkit runs on. Plain C++, so the binding can ask it
// before it reaches any toolkit code.
#pragma once

#if defined(__APPLE__)
#include <pthread.h>
#else
#include <sys/syscall.h>
#include <unistd.h>
#endif

// The toolkit lives on the process's main thread, in a host as in plain ruby.
inline bool OnMainThread() {
#if defined(__APPLE__)
  return pthread_main_np() != 0;
#else
  // Asked on every script call; a thread's answer never changes.
  static thread_local const bool main = syscall(SYS_gettid) == getpid();
  return main;
#endif
}
