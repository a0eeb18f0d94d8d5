/*
 * A reading library with one fault. The name of its file is the name of the fault ("hangs-in-readers.so"); with another
 * name it has no fault. Its card is always present.
 */
#define _GNU_SOURCE
#include "include/pelmora/reading-library.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <locale.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static const char reader[] = "Feitian SCR301";
static const char card[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><T_AsnDonneesVitale><listeBenef><T_AsnBeneficiaire>"
    "<ident><nomUsuel>SPECIMEN</nomUsuel></ident></T_AsnBeneficiaire></listeBenef>"
    "</T_AsnDonneesVitale>";
char last_card[sizeof card];
static int reader_is_chosen;
static int reads;
void* volatile lost; /* not static: it would be optimised away */

static int fault_is(const char* name)
{
    static const char here;
    Dl_info self;
    if (dladdr(&here, &self) == 0)
        abort();
    const char* file = strrchr(self.dli_fname, '/');
    return strncmp(file + 1, name, strlen(name)) == 0 && strcmp(file + 1 + strlen(name), ".so") == 0;
}

static void* wait_for_ever(void* nothing)
{
    for (;;)
        pause();
    return nothing;
}

static void ignore(int number)
{
    (void)number;
}

static int give(struct pelmora_reading_text* text, const char* content)
{
    const size_t length = strlen(content);
    if (length > text->capacity)
        return PELMORA_READING_TOO_LONG;
    memcpy(text->bytes, content, length);
    text->length = length;
    return PELMORA_READING_OK;
}

/* Copies a text without its null byte. Not with memcpy: the compiler would report that it overruns the buffer. */
static void put(char* bytes, const char* content)
{
    while (*content != '\0')
        *bytes++ = *content++;
}

int pelmora_reading_interface(void)
{
    return fault_is("newer-interface") ? PELMORA_READING_INTERFACE + 1 : PELMORA_READING_INTERFACE;
}

int pelmora_reading_open(void)
{
    pthread_t thread;
    reader_is_chosen = 0;
    if (fault_is("does-not-open"))
        return PELMORA_READING_READER_FAULT;
    if (fault_is("leaves-a-thread"))
        pthread_create(&thread, NULL, wait_for_ever, NULL);
    if (fault_is("changes-a-signal"))
        signal(SIGUSR1, ignore);
    if (fault_is("changes-the-locale"))
        setlocale(LC_NUMERIC, "C.UTF-8");
    if (fault_is("changes-the-folder") && chdir("/") != 0)
        abort();
    return PELMORA_READING_OK;
}

void pelmora_reading_close(void)
{
    reader_is_chosen = 0;
    if (fault_is("crashes-at-the-end"))
        atexit(abort);
}

int pelmora_reading_version(enum pelmora_reading_component component, struct pelmora_reading_text* text)
{
    if (fault_is("version-of-two-lines"))
        return give(text, "1\n2");
    if (fault_is("too-small-for-its-version") && text->capacity < 64)
        return PELMORA_READING_TOO_LONG;
    return give(text, component == PELMORA_READING_LIBRARY ? "1.0" : "");
}

int pelmora_reading_readers(struct pelmora_reading_text* text)
{
    if (fault_is("hangs-in-readers"))
        wait_for_ever(NULL);
    if (fault_is("readers-without-line-end"))
        return give(text, "Feitian SCR301");
    if (fault_is("readers-in-latin-1"))
        return give(text, "Feitian SCR301\n\xE9\n");
    if (fault_is("writes-beyond-the-buffer")) {
        put(text->bytes, "Feitian SCR301\n");
        text->length = strlen("Feitian SCR301\n");
        return text->length > text->capacity ? PELMORA_READING_TOO_LONG : PELMORA_READING_OK;
    }
    if (fault_is("cuts-the-readers")) {
        text->length = strlen("Feitian SCR301\n") < text->capacity ? strlen("Feitian SCR301\n") : text->capacity;
        memcpy(text->bytes, "Feitian SCR301\n", text->length);
        return PELMORA_READING_OK;
    }
    if (fault_is("lies-about-the-length")) {
        text->length = text->capacity + 1;
        return PELMORA_READING_OK;
    }
    if (fault_is("loses-memory"))
        lost = malloc(480);
    return give(text, "Feitian SCR301\n");
}

int pelmora_reading_choose_readers(const char* vitale_reader, const char* professional_reader)
{
    const int is_known = strcmp(vitale_reader, reader) == 0 && strcmp(professional_reader, reader) == 0;
    if (fault_is("accepts-any-reader"))
        return PELMORA_READING_OK;
    if (is_known || fault_is("forgets-the-choice"))
        reader_is_chosen = is_known;
    return is_known ? PELMORA_READING_OK : PELMORA_READING_READER_FAULT;
}

int pelmora_reading_read_card(struct pelmora_reading_text* text)
{
    ++reads;
    if (fault_is("forgets-the-choice") && !reader_is_chosen)
        return PELMORA_READING_FAILED;
    if (fault_is("crashes-in-a-read") && reads == 20)
        raise(SIGSEGV);
    if (fault_is("ends-the-process"))
        exit(EXIT_SUCCESS);
    if (fault_is("other-result-later") && reads == 20)
        return PELMORA_READING_READ_ERROR;
    if (fault_is("keeps-descriptors") && open("/dev/null", O_RDONLY | O_CLOEXEC) < 0)
        return PELMORA_READING_FAILED;
    if (fault_is("prints-the-card"))
        fprintf(stderr, "nom : SPECIMEN\n");
    if (fault_is("prints"))
        printf("carte lue\n");
    if (fault_is("card-with-document-type"))
        return give(text, "<!DOCTYPE a><T_AsnDonneesVitale/>");
    if (fault_is("card-that-is-no-xml"))
        return give(text, "<T_AsnDonneesVitale>");
    if (fault_is("card-in-latin-1"))
        return give(text, "<T_AsnDonneesVitale>\xE9</T_AsnDonneesVitale>");
    if (fault_is("other-document"))
        return give(text, "<carte/>");
    if (fault_is("keeps-the-card"))
        memcpy(last_card, card, sizeof card);
    return give(text, card);
}
