/*
 * A reading library that tries, when it is opened, what a card service must not be able to do, and some that it must,
 * and tells as its version how each of them ended: "name=OK" or "name=ERRNO".
 */
#define _GNU_SOURCE
#include "include/pelmora/reading-library.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

static char report[1024];

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
    tell("uring", syscall(SYS_io_uring_setup, 1, ring) >= 0);
    try_file("create", home, "/new", O_WRONLY | O_CREAT);
    try_file("write", home, "/old", O_WRONLY);
    try_file("truncate", home, "/old", O_RDONLY | O_TRUNC);
    try_file("read", home, "/old", O_RDONLY);
    try_file("temporary", "/tmp", "/pelmora-probe", O_WRONLY | O_CREAT);
    try_file("shared", "/dev/shm", "/pelmora-probe", O_WRONLY | O_CREAT);
    try_folder("folder", home, "/folder");
    try_file("null", "/dev", "/null", O_RDWR);
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
