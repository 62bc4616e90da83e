#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace stmdcm_test {

/// Uses up this process's file descriptors but for so many: for a child that ends soon.
inline void LeaveDescriptors(int count) {
    constexpr int Limit = 100;
    constexpr rlimit Limits{Limit, Limit};
    ::setrlimit(RLIMIT_NOFILE, &Limits);
    while (::open("/dev/null", O_RDONLY) >= 0) {
    }
    for (int descriptor = Limit - count; descriptor < Limit; ++descriptor) {
        ::close(descriptor);
    }
}

}  // namespace stmdcm_test
