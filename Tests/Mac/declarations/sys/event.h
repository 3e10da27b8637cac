#pragma once

#include <cstdint>
#include <ctime>

// kqueue(2)

struct kevent {
    std::uintptr_t ident;
    std::int16_t filter;
    std::uint16_t flags;
    std::uint32_t fflags;
    std::intptr_t data;
    void* udata;
};

#define EV_SET(kevp, a, b, c, d, e, f)                                                                       \
    do {                                                                                                     \
        struct kevent* __kevp__ = (kevp);                                                                    \
        __kevp__->ident = (a);                                                                               \
        __kevp__->filter = (b);                                                                              \
        __kevp__->flags = (c);                                                                               \
        __kevp__->fflags = (d);                                                                              \
        __kevp__->data = (e);                                                                                \
        __kevp__->udata = (f);                                                                               \
    } while (0)

#define EVFILT_PROC (-5)
#define EV_ADD 0x0001
#define NOTE_EXIT 0x80000000

extern "C" {
int kqueue(void);
int kevent(int kq, const struct kevent* changelist, int nchanges, struct kevent* eventlist, int nevents,
           const struct timespec* timeout);
}
