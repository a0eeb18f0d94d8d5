/*
 * The interface between Pelmora's card service and a reading library that is installed on the system.
 *
 * A shared object that defines the functions below, placed at /usr/lib/pelmora/reading-library.so, reads cards for
 * Pelmora. docs/reading-library.md has a complete example and shows how to try it.
 *
 * Threads: all functions are called on one thread of the service, which is not the process's first thread. The library
 * may make threads of its own.
 *
 * Order: pelmora_reading_interface is called first, then pelmora_reading_open. The other functions are called only
 * between a successful pelmora_reading_open and pelmora_reading_close, in any order and any number of times. Open and
 * close may be repeated until the process ends; the library is never unloaded.
 *
 * Time: when a read takes longer than 20 seconds, or another call longer than 10, the service reports a failure and its
 * process ends without pelmora_reading_close. When the application ends the process, pelmora_reading_close is called,
 * and the process is killed after a second.
 *
 * Texts: UTF-8, not ended by a zero byte. The caller owns the memory; see struct pelmora_reading_text.
 *
 * The process: only local sockets (AF_UNIX) can be made, and only devices and files in the user's folders
 * ~/Library/Logs/santesocial and ~/Library/Preferences/santesocial/sedica can be written to. The same holds for
 * programs that the library starts; 32-bit programs are killed. Standard output and standard error go to Pelmora's log,
 * so no data of a card may be printed. The library must not change signal handlers, the locale or the working folder.
 */
#ifndef PELMORA_READING_LIBRARY_H
#define PELMORA_READING_LIBRARY_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

enum
{
    /* The interface in this header. A library for another interface is refused. */
    PELMORA_READING_INTERFACE = 1
};

/* Return values. Any other number counts as PELMORA_READING_FAILED. */
enum pelmora_reading_result
{
    PELMORA_READING_OK = 0,
    PELMORA_READING_FAILED = 1,        /* a reason that is not one of these */
    PELMORA_READING_TOO_LONG = 2,      /* the text does not fit */
    PELMORA_READING_CARD_ABSENT = 11,  /* no card in the reader, or none that answers */
    PELMORA_READING_READER_FAULT = 13, /* the reader or its driver was lost */
    PELMORA_READING_CARD_CHANGED = 15, /* the card was removed or replaced during the read */
    PELMORA_READING_READ_ERROR = 17,   /* not a patient's card, or its data are refused or damaged */
    PELMORA_READING_CARD_MUTE = 25     /* the card does not answer, or is upside down */
};

/* The components that have a version. */
enum pelmora_reading_component
{
    PELMORA_READING_LIBRARY = 0,            /* the reading library */
    PELMORA_READING_CARD_TABLE = 1,         /* its table of cards */
    PELMORA_READING_DESTINATION_TABLE = 2,  /* its table of destination organisations */
    PELMORA_READING_AUTHORISATION_TABLE = 3 /* its table of authorisations */
};

/*
 * A buffer for a text. The caller sets the bytes and the capacity; the library writes its text from the first byte on
 * and sets the length. When the text does not fit, the function returns PELMORA_READING_TOO_LONG; it is not called
 * again with a larger buffer. After any failure the bytes and the length are ignored.
 */
struct pelmora_reading_text
{
    char* bytes;     /* never a null pointer; valid until the function returns, cleared by the caller afterwards */
    size_t capacity; /* bytes: 4 MiB for a card, 64 KiB for the readers, 1 KiB for a version */
    size_t length;   /* bytes; 0 when the function is called */
};

/*
 * The interface that the library implements: it returns PELMORA_READING_INTERFACE and does nothing else. Called first.
 */
int pelmora_reading_interface(void);

/*
 * Makes the library ready; no reader need be connected. After a failure the service does not use the library. In
 * automatic mode it uses its own one instead.
 */
int pelmora_reading_open(void);

/*
 * Undoes pelmora_reading_open: releases readers, cards and memory, and forgets chosen readers.
 */
void pelmora_reading_close(void);

/*
 * The version of a component as a text ("4.20.1") without line breaks; empty when there is no such component. It is
 * shown in the preferences.
 */
int pelmora_reading_version(enum pelmora_reading_component component, struct pelmora_reading_text* text);

/*
 * The connected readers, one name a line, each line ended by "\n"; empty when there are none. Names are those of PC/SC
 * or the library's own. Pelmora removes what PC/SC adds to the model (interface, serial number, reader and slot
 * numbers), and reads health cards only in the model "Feitian SCR301".
 */
int pelmora_reading_readers(struct pelmora_reading_text* text);

/*
 * Chooses the readers of the health card and of the professional's card by names from pelmora_reading_readers, ended by
 * a zero byte. Both may be the same reader. After a failure the earlier choice is kept.
 */
int pelmora_reading_choose_readers(const char* vitale_reader, const char* professional_reader);

/*
 * Reads the card in the health card's reader as an XML document with the root element "T_AsnDonneesVitale";
 * docs/card-data.md lists the paths that Pelmora reads. It must be in UTF-8, whatever encoding it declares, and without
 * a document type. Called only after a choice of readers. The library must not keep data of the card after the return.
 */
int pelmora_reading_read_card(struct pelmora_reading_text* text);

#ifdef __cplusplus
}
#endif

#endif
