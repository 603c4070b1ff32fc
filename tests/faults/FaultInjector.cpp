// A library to preload into a program: it counts every system call by which the program looks at, reads or
// changes files, and lets one of them go wrong. A filter of the kernel turns those calls into signals, so
// that nothing is missed, whatever library makes them, and counting begins behind the dynamic loader's own.
//
//   VORNU_FAULT_LOG   gets a line per call, or for the faulty one alone if VORNU_FAULT_AT names it:
//                     number, name, r or w (how the file is open), its path or both, parted by tabs
//   VORNU_FAULT_AT    number of the call, from 1
//   VORNU_FAULT_KIND  number of the error to give, or a word of `kFaultWords`; with a "+" behind the number
//                     later calls of the same name fail as well, but for those on the standard streams
//   VORNU_FAULT_EDIT  the file that somebody else adds to with the kind "edit"
//
// A program that ends by itself is logged a line of the name "left" for each file that it hasn't closed.

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#if !defined(__x86_64__)
#error "The registers of a system call are known for x86-64 alone."
#endif

// The only place whose calls the filter lets through.
asm(R"(
.text
rawSystemCall:
    mov %rdi, %rax
    mov %rsi, %rdi
    mov %rdx, %rsi
    mov %rcx, %rdx
    mov %r8, %r10
    mov %r9, %r8
    mov 8(%rsp), %r9
    syscall
behindRawSystemCall:
    ret
)");

extern "C" long rawSystemCall(long number, long a, long b, long c, long d, long e, long f);
extern "C" const char behindRawSystemCall[];

namespace
{

/// What the arguments of a call are.
enum class Form
{
    Folder,  // none: the working folder is meant
    Path,    // path
    PathAt,  // folder, path
    Two,     // path, path
    TwoAt,   // folder, path, folder, path
    File,    // descriptor
    Transfer // descriptor, buffer, length: one that may move less than was asked for
};

struct WatchedCall
{
    long number;
    const char* name;
    Form form;
};

constexpr WatchedCall kCalls[] = {
    {SYS_open, "open", Form::Path},
    {SYS_openat, "openat", Form::PathAt},
    {SYS_creat, "creat", Form::Path},
    {SYS_read, "read", Form::Transfer},
    {SYS_pread64, "pread64", Form::Transfer},
    {SYS_readv, "readv", Form::File},
    {SYS_write, "write", Form::Transfer},
    {SYS_pwrite64, "pwrite64", Form::Transfer},
    {SYS_writev, "writev", Form::File},
    {SYS_copy_file_range, "copy_file_range", Form::File},
    {SYS_sendfile, "sendfile", Form::File},
    {SYS_fsync, "fsync", Form::File},
    {SYS_fdatasync, "fdatasync", Form::File},
    {SYS_close, "close", Form::File},
    {SYS_lseek, "lseek", Form::File},
    {SYS_ftruncate, "ftruncate", Form::File},
    {SYS_flock, "flock", Form::File},
    {SYS_fchmod, "fchmod", Form::File},
    {SYS_fchown, "fchown", Form::File},
    {SYS_getxattr, "getxattr", Form::Path},
    {SYS_listxattr, "listxattr", Form::Path},
    {SYS_fgetxattr, "fgetxattr", Form::File},
    {SYS_flistxattr, "flistxattr", Form::File},
    {SYS_fsetxattr, "fsetxattr", Form::File},
    {SYS_fremovexattr, "fremovexattr", Form::File},
    {SYS_getdents64, "getdents64", Form::File},
    {SYS_fstat, "fstat", Form::File},
    {SYS_stat, "stat", Form::Path},
    {SYS_lstat, "lstat", Form::Path},
    {SYS_newfstatat, "newfstatat", Form::PathAt},
    {SYS_statx, "statx", Form::PathAt},
    {SYS_access, "access", Form::Path},
    {SYS_faccessat, "faccessat", Form::PathAt},
    {SYS_faccessat2, "faccessat2", Form::PathAt},
    {SYS_getcwd, "getcwd", Form::Folder},
    {SYS_readlink, "readlink", Form::Path},
    {SYS_readlinkat, "readlinkat", Form::PathAt},
    {SYS_rename, "rename", Form::Two},
    {SYS_renameat, "renameat", Form::TwoAt},
    {SYS_renameat2, "renameat2", Form::TwoAt},
    {SYS_link, "link", Form::Two},
    {SYS_linkat, "linkat", Form::TwoAt},
    {SYS_symlink, "symlink", Form::Two},
    {SYS_unlink, "unlink", Form::Path},
    {SYS_unlinkat, "unlinkat", Form::PathAt},
    {SYS_rmdir, "rmdir", Form::Path},
    {SYS_mkdir, "mkdir", Form::Path},
    {SYS_mkdirat, "mkdirat", Form::PathAt},
};

enum class Fault
{
    Error,
    Kill,      // the process dies in front of the call
    Stop,      // the process is stopped in front of the call until somebody continues it
    Terminate, // the process gets SIGTERM in front of the call
    After,     // the process gets SIGTERM behind the call
    Edit,      // somebody adds an entity to a file in front of the call
    Short,     // a transfer moves a single byte
    Full,      // a write moves a single byte, and the next one finds the disk full
};

constexpr struct
{
    const char* word;
    Fault fault;
} kFaultWords[] = {{"kill", Fault::Kill},        {"stop", Fault::Stop}, {"term", Fault::Terminate},
                   {"term-after", Fault::After}, {"edit", Fault::Edit}, {"short", Fault::Short},
                   {"full", Fault::Full}};

struct
{
    char logPath[PATH_MAX] = {};
    long at = 0;
    Fault fault = Fault::Error;
    int error = 0;
    bool lasts = false;
    char editPath[PATH_MAX] = {};
} plan;

std::atomic<long> callCount = 0;
std::atomic<bool> diskIsFull = false;
std::atomic<long> failingCall = -1; // number of the system call whose error lasts

using Arguments = std::array<long, 6>;

template<class... Values>
long Raw(long number, Values... values)
{
    const Arguments a = {(long)values...};
    return rawSystemCall(number, a[0], a[1], a[2], a[3], a[4], a[5]);
}

/// A line of the log; what doesn't fit is left out.
struct Line
{
    char text[3 * PATH_MAX];
    std::size_t length = 0;

    void Append(const char* part)
    {
        for (; *part != '\0' && length + 1 < sizeof text; ++part)
        {
            text[length++] = *part;
        }
    }

    void AppendDescriptor(long descriptor)
    {
        char name[64];
        char target[PATH_MAX];
        std::snprintf(name, sizeof name, "/proc/self/fd/%ld", descriptor);
        const long count = Raw(SYS_readlink, name, target, sizeof target - 1);
        target[count < 0 ? 0 : count] = '\0';
        Append(target);
    }

    void AppendPathAt(long folder, long path)
    {
        const char* const name = reinterpret_cast<const char*>(path);
        constexpr char kOpenFile[] = "/proc/self/fd/";
        if (name != nullptr && std::strncmp(name, kOpenFile, sizeof kOpenFile - 1) == 0)
        {
            AppendDescriptor(std::atol(name + sizeof kOpenFile - 1));
            return;
        }
        if (name == nullptr || (static_cast<int>(folder) != AT_FDCWD && name[0] != '/'))
        {
            AppendDescriptor(static_cast<int>(folder));
            Append(name != nullptr && name[0] != '\0' ? "/" : "");
        }
        Append(name != nullptr ? name : "");
    }
};

const char* AccessOf(const WatchedCall& call, const Arguments& a)
{
    const bool opens = call.number == SYS_open || call.number == SYS_openat;
    const bool isFile = call.form == Form::File || call.form == Form::Transfer;
    const long flags = opens    ? a[call.number == SYS_open ? 1 : 2]
                       : isFile ? Raw(SYS_fcntl, a[0], F_GETFL)
                                : 0;
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY ? "w" : "r";
}

void LogCall(long number, const WatchedCall& call, const Arguments& a)
{
    Line line;
    char head[64];
    std::snprintf(head, sizeof head, "%ld\t%s\t%s\t", number, call.name, AccessOf(call, a));
    line.Append(head);
    switch (call.form)
    {
    case Form::Folder:
        line.Append(".");
        break;
    case Form::Path:
        line.AppendPathAt(AT_FDCWD, a[0]);
        break;
    case Form::PathAt:
        line.AppendPathAt(a[0], a[1]);
        break;
    case Form::Two:
        line.AppendPathAt(AT_FDCWD, a[0]);
        line.Append("\t");
        line.AppendPathAt(AT_FDCWD, a[1]);
        break;
    case Form::TwoAt:
        line.AppendPathAt(a[0], a[1]);
        line.Append("\t");
        line.AppendPathAt(a[2], a[3]);
        break;
    case Form::File:
    case Form::Transfer:
        line.AppendDescriptor(a[0]);
        break;
    }
    line.Append("\n");
    const long log = Raw(SYS_open, plan.logPath, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    Raw(SYS_write, log, line.text, line.length);
    Raw(SYS_close, log);
}

long Forward(const WatchedCall& call, const Arguments& a)
{
    return rawSystemCall(call.number, a[0], a[1], a[2], a[3], a[4], a[5]);
}

void AppendEntity()
{
    constexpr char kText[] = "entity \"\" \"Edited\"\nend_entity\n";
    const long file = Raw(SYS_open, plan.editPath, O_WRONLY | O_APPEND | O_CLOEXEC, 0);
    Raw(SYS_write, file, kText, sizeof kText - 1);
    Raw(SYS_close, file);
}

/// The result of the call that is to go wrong.
long GoWrong(const WatchedCall& call, Arguments a)
{
    const long process = Raw(SYS_getpid);
    switch (plan.fault)
    {
    case Fault::Kill:
        Raw(SYS_kill, process, SIGKILL);
        break;
    case Fault::Stop:
        Raw(SYS_kill, process, SIGSTOP);
        break;
    case Fault::Terminate:
        Raw(SYS_kill, process, SIGTERM);
        break;
    case Fault::After:
    {
        const long result = Forward(call, a);
        Raw(SYS_kill, process, SIGTERM);
        return result;
    }
    case Fault::Edit:
        AppendEntity();
        break;
    case Fault::Full:
        diskIsFull = true;
        a[2] = 1;
        break;
    case Fault::Short:
        a[2] = 1;
        break;
    case Fault::Error:
        failingCall = plan.lasts ? call.number : -1;
        if (call.number == SYS_close)
        {
            Forward(call, a); // a close that fails has freed the descriptor all the same
        }
        return -plan.error;
    }
    return Forward(call, a);
}

/// The programs have none of their own; the sanitizers test memory by writing it to one.
bool IsPipe(long descriptor)
{
    struct stat status = {};
    return Raw(SYS_fstat, descriptor, &status) == 0 && S_ISFIFO(status.st_mode);
}

long Watch(const WatchedCall& call, const Arguments& a)
{
    if (call.number == SYS_write && diskIsFull.exchange(false))
    {
        return -ENOSPC;
    }
    const bool isStream =
        (call.form == Form::File || call.form == Form::Transfer) && (a[0] <= STDERR_FILENO || IsPipe(a[0]));
    const long number = ++callCount;
    if (call.number == failingCall && !isStream)
    {
        return GoWrong(call, a);
    }
    if (plan.at == 0 || number == plan.at)
    {
        LogCall(number, call, a);
    }
    return number == plan.at ? GoWrong(call, a) : Forward(call, a);
}

void OnWatchedCall(int, siginfo_t* info, void* context)
{
    greg_t* const registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    for (const WatchedCall& call : kCalls)
    {
        if (call.number == info->si_syscall)
        {
            registers[REG_RAX] = Watch(call, {registers[REG_RDI], registers[REG_RSI], registers[REG_RDX],
                                              registers[REG_R10], registers[REG_R8], registers[REG_R9]});
            return;
        }
    }
}

/// Lets the kernel raise SIGSYS for each watched call that doesn't come from `rawSystemCall`.
bool InstallFilter()
{
    constexpr std::size_t kCallCount = std::size(kCalls);
    const auto origin = reinterpret_cast<std::uintptr_t>(behindRawSystemCall);
    std::array<sock_filter, kCallCount + 8> program{};
    std::size_t length = 0;
    const auto add = [&](sock_filter step) { program[length++] = step; };
    const auto load = [&](std::size_t offset)
    { add(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset))); };
    const auto jumpIfEqual = [&](std::uint32_t value, std::size_t ifEqual, std::size_t otherwise)
    {
        add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, static_cast<std::uint8_t>(ifEqual),
                     static_cast<std::uint8_t>(otherwise)));
    };
    load(offsetof(seccomp_data, nr));
    for (std::size_t i = 0; i < kCallCount; ++i)
    {
        jumpIfEqual(static_cast<std::uint32_t>(kCalls[i].number), kCallCount - i, 0);
    }
    add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    load(offsetof(seccomp_data, instruction_pointer));
    jumpIfEqual(static_cast<std::uint32_t>(origin), 0, 3);
    load(offsetof(seccomp_data, instruction_pointer) + sizeof(std::uint32_t));
    jumpIfEqual(static_cast<std::uint32_t>(origin >> 32), 0, 1);
    add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP));
    const sock_fprog filter = {static_cast<unsigned short>(length), program.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

void ReadPlan()
{
    const char* const log = std::getenv("VORNU_FAULT_LOG");
    const char* const at = std::getenv("VORNU_FAULT_AT");
    const char* const kind = std::getenv("VORNU_FAULT_KIND");
    std::snprintf(plan.logPath, sizeof plan.logPath, "%s", log != nullptr ? log : "/dev/null");
    plan.at = at != nullptr ? std::atol(at) : 0;
    plan.error = kind != nullptr ? std::atoi(kind) : 0;
    plan.lasts = kind != nullptr && std::strchr(kind, '+') != nullptr;
    const char* const edit = std::getenv("VORNU_FAULT_EDIT");
    std::snprintf(plan.editPath, sizeof plan.editPath, "%s", edit != nullptr ? edit : "");
    for (const auto& [word, fault] : kFaultWords)
    {
        plan.fault = kind != nullptr && std::strcmp(kind, word) == 0 ? fault : plan.fault;
    }
}

/// Runs behind the dynamic loader and in front of the program.
[[gnu::constructor]] void Begin()
{
    ReadPlan();
    struct sigaction action = {};
    action.sa_sigaction = OnWatchedCall;
    action.sa_flags =
        SA_SIGINFO | SA_NODEFER; // signal handlers that the program gets meanwhile use files too
    if (::sigaction(SIGSYS, &action, nullptr) != 0 || !InstallFilter())
    {
        std::fputs("The fault injector can't watch system calls here.\n", stderr);
        std::abort();
    }
}

/// Runs behind the program.
[[gnu::destructor]] void End()
{
    constexpr long kDescriptors = 256; // far above what a small project takes
    for (long descriptor = STDERR_FILENO + 1; descriptor < kDescriptors; ++descriptor)
    {
        if (Raw(SYS_fcntl, descriptor, F_GETFD) >= 0)
        {
            LogCall(0, {SYS_close, "left", Form::File}, {descriptor});
        }
    }
}

} // namespace
