// Loaded before the C library (LD_PRELOAD), it stands between a program and the system: it counts the calls
// that may fail, place by place, and fails or delays those that it is told to. scripts/faults has the use of
// it.
//
//   TARNLY_FAULTS_LOG=FILE   one line for each fault, and at the end of main() one for each place that
//   called:
//                              fault CALL PLACE NUMBER THREAD TARGET | STACK
//                              place CALL PLACE COUNT THREAD TARGET | STACK
//   TARNLY_FAULT=CALL[/PLACE]:FIRST[-[LAST]]:errno=N   or  …:delay=MILLISECONDS
//                            the calls of that name (and place) from the FIRST, which is 1, to the LAST
//
// A PLACE is a number for the stack of the call, the same in each run of the same program. Calls count from
// the beginning of main() to its end. Descriptors that cannot fail (event counters, timers) are left alone.

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <link.h>
#include <netdb.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <cerrno>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>
#include <utility>

namespace {

// What this library needs of the system it asks of the kernel itself, as the C library's functions are its
// own.
long kernel(long number, long a = 0, long b = 0, long c = 0, long d = 0) {
    const int before = errno;
    const long result = syscall(number, a, b, c, d);
    errno = before;
    return result;
}

template <typename Pointer>
long word(Pointer* pointer) {
    return reinterpret_cast<long>(pointer);
}

// Set for what this library itself does, and for what the C library does on its behalf.
[[gnu::tls_model("initial-exec")]] thread_local bool isInside = false;

struct Inside {
    Inside() { isInside = true; }
    ~Inside() { isInside = false; }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
};

using Main = int (*)(int, char**, char**);
Main realMain = nullptr;

std::atomic<bool> isMainRunning = false;
int logDescriptor = -1;
int stackDepth = 10;

// The plan

struct Plan {
    std::string_view call;
    std::uint64_t place = 0; // any, when 0
    long first = 0, last = 0;
    int error = 0;
    long delayMilliseconds = 0;
} plan;
std::atomic<long> planned = 0;

void readPlan(const char* text) {
    if (text == nullptr) return;
    const auto* colon = std::strchr(text, ':');
    if (colon == nullptr) return;
    plan.call = {text, static_cast<std::size_t>(colon - text)};
    if (const auto stroke = plan.call.find('/'); stroke != std::string_view::npos) {
        plan.place = std::strtoull(text + stroke + 1, nullptr, 16);
        plan.call = plan.call.substr(0, stroke);
    }
    char* rest = nullptr;
    plan.first = plan.last = std::strtol(colon + 1, &rest, 10);
    if (*rest == '-') {
        plan.last = std::strtol(rest + 1, &rest, 10);
        if (plan.last == 0) plan.last = 1L << 60;
    }
    if (std::strncmp(rest, ":errno=", 7) == 0) plan.error = std::atoi(rest + 7);
    if (std::strncmp(rest, ":delay=", 7) == 0) plan.delayMilliseconds = std::atol(rest + 7);
}

// Places

struct Module {
    std::uintptr_t begin, end;
    std::array<char, 40> name;
};
std::array<Module, 64> modules;
std::size_t moduleCount = 0;

int noteModule(dl_phdr_info* info, std::size_t, void*) {
    std::uintptr_t end = info->dlpi_addr;
    for (int part = 0; part < info->dlpi_phnum; ++part) {
        const auto& header = info->dlpi_phdr[part];
        if (header.p_type == PT_LOAD) end = info->dlpi_addr + header.p_vaddr + header.p_memsz;
    }
    if (moduleCount == modules.size()) return 1;
    auto& module = modules[moduleCount++];
    module = {info->dlpi_addr, end, {}};
    const char* stroke = std::strrchr(info->dlpi_name, '/');
    const char* name = stroke == nullptr ? "" : stroke + 1;
    std::snprintf(module.name.data(), module.name.size(), "%s", *name == '\0' ? "program" : name);
    return 0;
}

struct Stack {
    std::array<void*, 24> frames;
    int count = 0;

    int own = 0; // this library's, on top

    Stack() {
        count = backtrace(frames.data(), std::min(4 + stackDepth, static_cast<int>(frames.size())));
        const auto* here = moduleOf(reinterpret_cast<std::uintptr_t>(&realMain));
        while (own < count && moduleOf(addressOf(own)) == here) {
            ++own;
        }
        count = std::min(count, own + stackDepth);
    }

    std::uintptr_t addressOf(int index) const {
        return reinterpret_cast<std::uintptr_t>(frames[static_cast<std::size_t>(index)]);
    }

    static const Module* moduleOf(std::uintptr_t address) {
        for (std::size_t index = 0; index < moduleCount; ++index) {
            if (address >= modules[index].begin && address < modules[index].end) return &modules[index];
        }
        return nullptr;
    }

    std::uint64_t place() const {
        std::uint64_t hash = 1469598103934665603U;
        for (int index = own; index < count; ++index) {
            const auto address = addressOf(index);
            const auto* module = moduleOf(address);
            const auto base =
                module == nullptr ? 0 : module->begin - static_cast<std::uintptr_t>(module - &modules[0]);
            hash = (hash ^ (address - base)) * 1099511628211U;
        }
        return hash | 1;
    }

    void appendTo(char* text, std::size_t size) const {
        std::size_t used = std::strlen(text);
        for (int index = own; index < count && used + 64 < size; ++index) {
            const auto address = addressOf(index);
            const auto* module = moduleOf(address);
            if (module == nullptr) continue;
            used += static_cast<std::size_t>(std::snprintf(text + used, size - used, " %s+0x%zx",
                                                           module->name.data(), address - module->begin));
        }
    }
};

struct Place {
    std::atomic<std::uint64_t> key; // of place and call; 0 while it is free
    std::atomic<long> count;
    const char* call;
    std::uint64_t place;
    std::array<char, 900> about;
};
std::array<Place, 8192> places;

Place* placeOf(const char* call, std::uint64_t place) {
    const std::uint64_t key = place ^ (reinterpret_cast<std::uintptr_t>(call) << 20U);
    for (std::size_t step = 0; step < places.size(); ++step) {
        auto& entry = places[(key + step) % places.size()];
        std::uint64_t found = entry.key.load();
        if (found == 0 && entry.key.compare_exchange_strong(found, key)) {
            entry.call = call;
            entry.place = place;
            return &entry;
        }
        if (found == key) return &entry;
    }
    return nullptr;
}

// Calls

enum class Target { nothing, path, descriptor };

struct About {
    std::array<char, 900> text;

    About(Target target, long value, const Stack& stack) {
        text[0] = '\0';
        std::array<char, 200> name{};
        if (target == Target::path && value != 0) {
            std::snprintf(name.data(), name.size(), "%s", reinterpret_cast<const char*>(value));
        } else if (target == Target::descriptor) {
            std::array<char, 40> link{};
            std::snprintf(link.data(), link.size(), "/proc/self/fd/%ld", value);
            kernel(SYS_readlinkat, AT_FDCWD, word(link.data()), word(name.data()),
                   static_cast<long>(name.size() - 1));
        }
        const bool isMain = kernel(SYS_gettid) == kernel(SYS_getpid);
        std::snprintf(text.data(), text.size(), "%s %s |", isMain ? "main" : "other",
                      name[0] == '\0' ? "-" : name.data());
        stack.appendTo(text.data(), text.size());
    }
};

void tell(const char* what, const char* call, std::uint64_t place, long number, const char* about) {
    std::array<char, 1100> line{};
    const int length = std::snprintf(line.data(), line.size(), "%s %s %llx %ld %s\n", what, call,
                                     static_cast<unsigned long long>(place), number, about);
    if (length > 0)
        kernel(SYS_write, logDescriptor, word(line.data()), std::min<long>(length, line.size() - 1));
}

/// Whether this call is to fail; errno says how. One that is to be delayed has been, then.
[[gnu::noinline]] bool isFaulty(const char* call, Target target, long value) {
    if (isInside || call == nullptr || !isMainRunning.load(std::memory_order_relaxed)) return false;
    const int before = errno;
    bool fails = false;
    {
        const Inside inside;
        const Stack stack;
        const auto place = stack.place();
        if (plan.call.empty()) {
            if (auto* entry = placeOf(call, place); entry != nullptr && entry->count.fetch_add(1) == 0) {
                const About about(target, value, stack);
                entry->about = about.text;
            }
        } else if (plan.call == call && (plan.place == 0 || plan.place == place)) {
            const long number = planned.fetch_add(1) + 1;
            fails = number >= plan.first && number <= plan.last;
            if (fails) tell("fault", call, place, number, About(target, value, stack).text.data());
        }
    }
    errno = before;
    if (!fails) return false;
    if (plan.delayMilliseconds > 0) {
        const timespec delay{plan.delayMilliseconds / 1000, plan.delayMilliseconds % 1000 * 1'000'000};
        kernel(SYS_nanosleep, word(&delay));
        return false;
    }
    errno = plan.error;
    return true;
}

/// What reading and writing is called, which depends on what it is that is read; null for what cannot fail.
const char* kindOf(long descriptor, const char* ofFile, const char* ofSocket) {
    if (isInside || !isMainRunning.load(std::memory_order_relaxed)) return nullptr;
    struct stat found {};
    if (kernel(SYS_fstat, descriptor, word(&found)) != 0) return nullptr;
    if (descriptor == 1 || descriptor == 2) return "print";
    if (S_ISREG(found.st_mode)) return ofFile;
    return S_ISSOCK(found.st_mode) ? ofSocket : nullptr;
}

/// All these functions take at most six words, which are passed in registers, those behind an ellipsis as
/// well: so one form does for all.
using Function = long (*)(long, long, long, long, long, long);

Function realOf(std::atomic<Function>& known, const char* name) {
    if (auto function = known.load(std::memory_order_relaxed)) return function;
    const bool wasInside = std::exchange(isInside, true);
    auto function = reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
    isInside = wasInside;
    known.store(function);
    return function;
}

/// A connection that was aborted waits no longer, unlike one for which there is no descriptor.
void loseAborted(Function accept, long listener) {
    if (errno != ECONNABORTED) return;
    const long accepted = accept(listener, 0, 0, 0, 0, 0);
    if (accepted >= 0) kernel(SYS_close, accepted);
    errno = ECONNABORTED;
}

} // namespace

#define TARNLY_FAULTY(name, call, target, value, failure)                                                \
    extern "C" [[gnu::visibility("default")]] long faulty_##name(long a, long b, long c, long d, long e, \
                                                                 long f) __asm__(#name);                 \
    long faulty_##name(long a, long b, long c, long d, long e, long f) {                                 \
        static std::atomic<Function> known;                                                              \
        const auto real = realOf(known, #name);                                                          \
        if (isFaulty(call, target, value)) return failure;                                               \
        return real(a, b, c, d, e, f);                                                                   \
    }

#define TARNLY_FAULTY_PATH(name, call) TARNLY_FAULTY(name, call, Target::path, a, -1)
#define TARNLY_FAULTY_DESCRIPTOR(name, call) TARNLY_FAULTY(name, call, Target::descriptor, a, -1)
#define TARNLY_FAULTY_PLAIN(name, call) TARNLY_FAULTY(name, call, Target::nothing, 0, -1)

// Files
TARNLY_FAULTY_PATH(open, "open")
TARNLY_FAULTY_PATH(open64, "open")
TARNLY_FAULTY(openat, "open", Target::path, b, -1)
TARNLY_FAULTY(openat64, "open", Target::path, b, -1)
TARNLY_FAULTY_PATH(mkostemp, "open")
TARNLY_FAULTY(fopen, "open", Target::path, a, 0)
TARNLY_FAULTY(fopen64, "open", Target::path, a, 0)
TARNLY_FAULTY(opendir, "open", Target::path, a, 0)
TARNLY_FAULTY(fdopendir, "open", Target::descriptor, a, 0)
TARNLY_FAULTY(readdir, "readdir", Target::nothing, 0, 0)
TARNLY_FAULTY_DESCRIPTOR(pread64, "read")
TARNLY_FAULTY_DESCRIPTOR(pwrite64, "write")
TARNLY_FAULTY(read, kindOf(a, "read", "recv"), Target::descriptor, a, -1)
TARNLY_FAULTY(readv, kindOf(a, "read", "recv"), Target::descriptor, a, -1)
TARNLY_FAULTY(write, kindOf(a, "write", "send"), Target::descriptor, a, -1)
TARNLY_FAULTY(writev, kindOf(a, "write", "send"), Target::descriptor, a, -1)
TARNLY_FAULTY_DESCRIPTOR(fsync, "fsync")
TARNLY_FAULTY_DESCRIPTOR(fdatasync, "fsync")
TARNLY_FAULTY_DESCRIPTOR(ftruncate, "ftruncate")
TARNLY_FAULTY_DESCRIPTOR(lseek, "lseek")
TARNLY_FAULTY_DESCRIPTOR(lseek64, "lseek")
TARNLY_FAULTY_DESCRIPTOR(flock, "flock")
TARNLY_FAULTY_DESCRIPTOR(fchmod, "chmod")
TARNLY_FAULTY_PATH(mkdir, "mkdir")
TARNLY_FAULTY_PATH(rename, "rename")
TARNLY_FAULTY_PATH(unlink, "unlink")
TARNLY_FAULTY(unlinkat, "unlink", Target::path, b, -1)
TARNLY_FAULTY_PATH(remove, "unlink")
TARNLY_FAULTY_PATH(stat, "stat")
TARNLY_FAULTY_PATH(stat64, "stat")
TARNLY_FAULTY_PATH(lstat, "stat")
TARNLY_FAULTY_PATH(lstat64, "stat")
TARNLY_FAULTY_DESCRIPTOR(fstat, "stat")
TARNLY_FAULTY_DESCRIPTOR(fstat64, "stat")
TARNLY_FAULTY_PATH(statvfs, "stat")
TARNLY_FAULTY_PATH(access, "stat")
TARNLY_FAULTY_PATH(readlink, "stat")
TARNLY_FAULTY(realpath, "stat", Target::path, a, 0)
TARNLY_FAULTY(getcwd, "getcwd", Target::nothing, 0, 0)
TARNLY_FAULTY(getpwuid, "getpwuid", Target::nothing, 0, 0)

// Descriptors. What fails to close has been closed all the same.
TARNLY_FAULTY_PLAIN(pipe, "pipe")
TARNLY_FAULTY_PLAIN(pipe2, "pipe")
TARNLY_FAULTY_DESCRIPTOR(fcntl, "fcntl")
TARNLY_FAULTY_DESCRIPTOR(ioctl, "ioctl")
TARNLY_FAULTY(close, "close", Target::descriptor, a, (kernel(SYS_close, a), -1))

// Sockets
TARNLY_FAULTY_PLAIN(socket, "socket")
TARNLY_FAULTY_PLAIN(socketpair, "socket")
TARNLY_FAULTY_DESCRIPTOR(bind, "bind")
TARNLY_FAULTY_DESCRIPTOR(listen, "listen")
TARNLY_FAULTY(accept, "accept", Target::descriptor, a, (loseAborted(real, a), -1))
TARNLY_FAULTY(accept4, "accept", Target::descriptor, a, (loseAborted(real, a), -1))
TARNLY_FAULTY_DESCRIPTOR(connect, "connect")
TARNLY_FAULTY_DESCRIPTOR(send, "send")
TARNLY_FAULTY_DESCRIPTOR(sendto, "send")
TARNLY_FAULTY_DESCRIPTOR(sendmsg, "send")
TARNLY_FAULTY_DESCRIPTOR(recv, "recv")
TARNLY_FAULTY_DESCRIPTOR(recvfrom, "recv")
TARNLY_FAULTY_DESCRIPTOR(recvmsg, "recv")
TARNLY_FAULTY_DESCRIPTOR(shutdown, "shutdown")
TARNLY_FAULTY_DESCRIPTOR(setsockopt, "setsockopt")
TARNLY_FAULTY_DESCRIPTOR(getsockopt, "getsockopt")
TARNLY_FAULTY_DESCRIPTOR(getsockname, "getsockname")
TARNLY_FAULTY_DESCRIPTOR(getpeername, "getsockname")
TARNLY_FAULTY_PLAIN(getifaddrs, "getifaddrs")
TARNLY_FAULTY(getaddrinfo, "getaddrinfo", Target::path, a, EAI_SYSTEM)
TARNLY_FAULTY_PLAIN(gethostname, "gethostname")

// Waiting, threads, chance
TARNLY_FAULTY_PLAIN(epoll_create, "epoll_create")
TARNLY_FAULTY_PLAIN(epoll_create1, "epoll_create")
TARNLY_FAULTY(epoll_ctl, "epoll_ctl", Target::descriptor, c, -1)
TARNLY_FAULTY_PLAIN(eventfd, "eventfd")
TARNLY_FAULTY_PLAIN(timerfd_create, "timerfd")
TARNLY_FAULTY_PLAIN(getentropy, "random")
TARNLY_FAULTY_PLAIN(getrandom, "random")
TARNLY_FAULTY(pthread_create, "thread", Target::nothing, 0, errno)

// Memory. The C library's own names for these need no look-up, which would allocate.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

[[gnu::visibility("default")]] void* faulty_malloc(std::size_t size) __asm__("malloc");
[[gnu::visibility("default")]] void* faulty_calloc(std::size_t count, std::size_t size) __asm__("calloc");
[[gnu::visibility("default")]] void* faulty_realloc(void* block, std::size_t size) __asm__("realloc");
[[gnu::visibility("default")]] void* faulty_aligned(std::size_t alignment,
                                                    std::size_t size) __asm__("aligned_alloc");

void* faulty_malloc(std::size_t size) {
    return isFaulty("malloc", Target::nothing, 0) ? nullptr : __libc_malloc(size);
}
void* faulty_calloc(std::size_t count, std::size_t size) {
    return isFaulty("malloc", Target::nothing, 0) ? nullptr : __libc_calloc(count, size);
}
void* faulty_realloc(void* block, std::size_t size) {
    return isFaulty("malloc", Target::nothing, 0) ? nullptr : __libc_realloc(block, size);
}
void* faulty_aligned(std::size_t alignment, std::size_t size) {
    return isFaulty("malloc", Target::nothing, 0) ? nullptr : __libc_memalign(alignment, size);
}
}

// The beginning and the end

namespace {

void prepare() {
    const Inside inside;
    if (const char* depth = std::getenv("TARNLY_FAULTS_DEPTH")) stackDepth = std::min(std::atoi(depth), 20);
    if (const char* file = std::getenv("TARNLY_FAULTS_LOG")) {
        const long opened =
            kernel(SYS_openat, AT_FDCWD, word(file), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        // Far away from those of the program, which has its own idea of how many it has.
        logDescriptor = static_cast<int>(kernel(SYS_fcntl, opened, F_DUPFD_CLOEXEC, 900));
        kernel(SYS_close, opened);
    }
    readPlan(std::getenv("TARNLY_FAULT"));
    dl_iterate_phdr(noteModule, nullptr);
    const Stack first; // the library that looks at stacks allocates once
}

void tellPlaces() {
    for (const auto& entry : places) {
        if (entry.key.load() != 0)
            tell("place", entry.call, entry.place, entry.count.load(), entry.about.data());
    }
}

int watchedMain(int count, char** arguments, char** environment) {
    prepare();
    isMainRunning = true;
    const int status = realMain(count, arguments, environment);
    isMainRunning = false;
    tellPlaces();
    return status;
}

} // namespace

extern "C" [[gnu::visibility("default")]] int __libc_start_main(Main program, int count, char** arguments,
                                                                void (*init)(), void (*fini)(), void (*end)(),
                                                                void* stack) {
    realMain = program;
    const auto real = reinterpret_cast<decltype(&__libc_start_main)>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return real(watchedMain, count, arguments, init, fini, end, stack);
}
