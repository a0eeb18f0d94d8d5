/*
 * A reading library that, when it is opened, tries operations that a card service must not be able to do, and some that
 * it must. Its version lists the results: "name=OK" or "name=ERRNO". It uses these environment variables:
 *   PROBE_SOCKET    another program's socket with a path
 *   PROBE_ABSTRACT  another program's abstract socket
 *   PROBE_DISPLAY   the X server's socket, which has a path and an abstract name
 *   PROBE_SHARED    an existing file in shared memory
 *   PROBE_SIBLING   the number of a process that it tries to end
 */
#define _GNU_SOURCE
#include "include/pelmora/reading-library.h"

#include <errno.h>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/fs.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

static char report[2048];

static void tell(const char* name, int is_done)
{
    const size_t used = strlen(report);
    snprintf(report + used, sizeof report - used, "%s%s=%s", used == 0 ? "" : " ", name,
             is_done ? "OK" : strerrorname_np(errno));
}

static void try_socket(const char* name, int family, int type)
{
    const int socket_made = socket(family, type, 0);
    tell(name, socket_made >= 0);
    if (socket_made >= 0)
        close(socket_made);
}

static void try_file(const char* name, const char* folder, const char* file, int flags)
{
    char path[4096];
    snprintf(path, sizeof path, "%s%s", folder, file);
    const int opened = open(path, flags | O_CLOEXEC, 0600);
    tell(name, opened >= 0);
    if (opened >= 0)
        close(opened);
}

static void try_folder(const char* name, const char* folder, const char* file)
{
    char path[4096];
    snprintf(path, sizeof path, "%s%s", folder, file);
    const int is_made = mkdir(path, 0700) == 0;
    tell(name, is_made);
    if (is_made)
        rmdir(path);
}

/* A name that begins with '@' is abstract: it has no path. */
static struct sockaddr_un address_of(const char* name, socklen_t* size)
{
    struct sockaddr_un address = {.sun_family = AF_UNIX};
    snprintf(address.sun_path, sizeof address.sun_path, "%s", name);
    *size = (socklen_t)(offsetof(struct sockaddr_un, sun_path) + strlen(name));
    if (name[0] == '@')
        address.sun_path[0] = '\0';
    else
        *size = sizeof address;
    return address;
}

static void try_connection(const char* name, const char* there)
{
    socklen_t size = 0;
    const struct sockaddr_un address = address_of(there, &size);
    const int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    tell(name, connect(made, (const struct sockaddr*)&address, size) == 0);
    close(made);
}

/* With the calls that take the receiver's address. */
static void try_to_send(const char* there)
{
    socklen_t size = 0;
    struct sockaddr_un address = address_of(there, &size);
    const int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    tell("sendto", sendto(made, "x", 1, MSG_NOSIGNAL, (const struct sockaddr*)&address, size) == 1);
    const struct msghdr message = {.msg_name = &address, .msg_namelen = size};
    tell("sendmsg", sendmsg(made, &message, MSG_NOSIGNAL) >= 0);
    close(made);
}

static void try_to_be_found(void)
{
    socklen_t size = 0;
    const struct sockaddr_un address = address_of("@pelmora-probe", &size);
    const int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    tell("bind", bind(made, (const struct sockaddr*)&address, size) == 0 && listen(made, 1) == 0);
    close(made);
}

/* Tries to install a filter that allows all connections, with a listener in this library. */
static void try_own_listener(void)
{
    struct sock_filter pass = BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
    const struct sock_fprog program = {.len = 1, .filter = &pass};
    const long listener = syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program);
    tell("listener", listener >= 0);
}

/* Tries to start a service of the session bus, with dbus-send instead of a D-Bus library. */
static void try_to_start_outside(void)
{
    const int status = system("exec dbus-send --session --dest=org.freedesktop.DBus /org/freedesktop/DBus "
                              "org.freedesktop.DBus.StartServiceByName string:com.example.Probe uint32:0 >&2");
    errno = ECHILD;
    tell("start", status == 0);
}

static void try_changes(const char* home)
{
    char path[4096];
    snprintf(path, sizeof path, "%s/old", home);
    const int opened = open(path, O_RDONLY | O_CLOEXEC);
    int flags = FS_NOATIME_FL;
    tell("chmod", chmod(path, 0644) == 0);
    tell("fchmod", fchmod(opened, 0644) == 0);
    tell("fchmodat2", syscall(452, AT_FDCWD, path, 0644, 0) == 0);
    tell("chown", chown(path, (uid_t)-1, (gid_t)-1) == 0);
    tell("fchown", fchown(opened, (uid_t)-1, (gid_t)-1) == 0);
    tell("setxattr", setxattr(path, "user.probe", "1", 1, 0) == 0);
    tell("removexattr", removexattr(path, "user.old") == 0);
    tell("utimensat", utimensat(AT_FDCWD, path, NULL, 0) == 0);
    tell("futimens", futimens(opened, NULL) == 0);
    tell("flags", ioctl(opened, FS_IOC_SETFLAGS, &flags) == 0);
    close(opened);
    tell("truncate2", truncate(path, 1) == 0);
    try_file("truncate3", home, "/old", O_ACCMODE | O_TRUNC);
}

static void try_signals(void)
{
    const char* sibling = getenv("PROBE_SIBLING");
    const pid_t process = sibling != NULL ? (pid_t)atoi(sibling) : getppid();
    const struct rlimit limit = {.rlim_cur = 1000, .rlim_max = 1000};
    tell("self", kill(getpid(), 0) == 0);
    tell("prlimit", prlimit(process, RLIMIT_CPU, &limit, NULL) == 0);
    tell("kill", kill(process, sibling != NULL ? SIGTERM : 0) == 0);
    tell("tgkill", syscall(SYS_tgkill, process, process, 0) == 0);
    const union sigval value = {.sival_int = 0};
    tell("sigqueue", sigqueue(process, 0, value) == 0);
}

int pelmora_reading_interface(void)
{
    return PELMORA_READING_INTERFACE;
}

int pelmora_reading_open(void)
{
    const char* home = getenv("HOME");
    char ring[256] = {0};
    errno = EPERM;
    tell("privileges", prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 0);
    try_socket("inet", AF_INET, SOCK_STREAM);
    try_socket("inet6", AF_INET6, SOCK_DGRAM);
    try_socket("netlink", AF_NETLINK, SOCK_RAW);
    try_socket("packet", AF_PACKET, SOCK_RAW);
    try_socket("vsock", AF_VSOCK, SOCK_STREAM);
    try_socket("unix", AF_UNIX, SOCK_STREAM);
    try_socket("datagram", AF_UNIX, SOCK_DGRAM);
    try_connection("pcsc", getenv("PCSCLITE_CSOCK_NAME"));
    try_connection("socket", getenv("PROBE_SOCKET"));
    try_connection("abstract", getenv("PROBE_ABSTRACT"));
    try_connection("display", getenv("PROBE_DISPLAY") + 1);
    try_connection("display2", getenv("PROBE_DISPLAY"));
    try_to_send(getenv("PROBE_SOCKET"));
    try_to_be_found();
    try_own_listener();
    try_to_start_outside();
    tell("uring", syscall(SYS_io_uring_setup, 1, ring) >= 0);
    try_file("create", home, "/new", O_WRONLY | O_CREAT);
    try_file("write", home, "/old", O_WRONLY);
    try_file("truncate", home, "/old", O_RDONLY | O_TRUNC);
    try_file("read", home, "/old", O_RDONLY);
    try_file("temporary", "/tmp", "/pelmora-probe", O_WRONLY | O_CREAT);
    try_file("shared", "/dev/shm", "/pelmora-probe", O_WRONLY | O_CREAT);
    try_file("shared2", getenv("PROBE_SHARED"), "", O_RDWR);
    try_folder("folder", home, "/folder");
    try_file("null", "/dev", "/null", O_RDWR);
    try_file("terminal", "/dev", "/ptmx", O_RDWR | O_NOCTTY);
    try_changes(home);
    try_signals();
    try_file("log", home, "/Library/Logs/santesocial/log", O_WRONLY | O_CREAT);
    try_folder("settings", home, "/Library/Preferences/santesocial/sedica/folder");
    return PELMORA_READING_OK;
}

void pelmora_reading_close(void)
{
}

int pelmora_reading_version(enum pelmora_reading_component component, struct pelmora_reading_text* text)
{
    if (component != PELMORA_READING_LIBRARY)
        return PELMORA_READING_OK;
    text->length = strlen(report);
    if (text->length > text->capacity)
        return PELMORA_READING_TOO_LONG;
    memcpy(text->bytes, report, text->length);
    return PELMORA_READING_OK;
}

int pelmora_reading_readers(struct pelmora_reading_text* text)
{
    (void)text;
    return PELMORA_READING_OK;
}

int pelmora_reading_choose_readers(const char* vitale_reader, const char* professional_reader)
{
    (void)vitale_reader;
    (void)professional_reader;
    return PELMORA_READING_FAILED;
}

int pelmora_reading_read_card(struct pelmora_reading_text* text)
{
    (void)text;
    return PELMORA_READING_CARD_ABSENT;
}
