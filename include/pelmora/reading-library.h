/*
 * The interface between Pelmora's card service and a reading library that is installed on the system.
 *
 * A shared object that defines the functions below, placed at /usr/lib/pelmora/reading-library.so, reads cards for
 * Pelmora. docs/reading-library.md shows a whole one and how to try it.
 *
 * Threads: all functions are called by one thread of the service, never two at a time. It is not the process's first
 * thread. Whatever threads the library makes are its own business.
 *
 * Order: pelmora_reading_interface comes first. Then pelmora_reading_open; until it has succeeded, and after
 * pelmora_reading_close, nothing but these two is called. The other functions may be called in any order, any number of
 * times. Open and close may alternate for as long as the process lives; the library is never unloaded.
 *
 * Time: a read that lasts longer than 20 seconds, or another call that lasts longer than 10, is answered by the service
 * as a failure, and its process ends, without pelmora_reading_close. When the process is to leave,
 * pelmora_reading_close is called, but what has not come to its end within a second is killed.
 *
 * Texts: UTF-8, not ended by a zero byte. The memory is the caller's; see struct pelmora_reading_text.
 *
 * The process: no sockets but local ones (AF_UNIX), and no file written to but devices and what lies in the user's
 * folders ~/Library/Logs/santesocial and ~/Library/Preferences/santesocial/sedica. Programs that the library starts are
 * bound in the same way; 32-bit ones are killed. Standard output and standard error go to Pelmora's log, where nothing
 * of a card may appear. Signal handlers, the locale and the working folder are to be left alone.
 */
#ifndef PELMORA_READING_LIBRARY_H
#define PELMORA_READING_LIBRARY_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

enum
{
    /* The interface that this header describes. A library of another one is refused. */
    PELMORA_READING_INTERFACE = 1
};

/* What functions return. Pelmora takes any other number as PELMORA_READING_FAILED. */
enum pelmora_reading_result
{
    PELMORA_READING_OK = 0,
    PELMORA_READING_FAILED = 1,        /* a reason that is not one of these */
    PELMORA_READING_TOO_LONG = 2,      /* the text does not fit */
    PELMORA_READING_CARD_ABSENT = 11,  /* no card in the reader, or not one that answers */
    PELMORA_READING_READER_FAULT = 13, /* the reader, or what drives it, is lost */
    PELMORA_READING_CARD_CHANGED = 15, /* the card left, or another came, during the read */
    PELMORA_READING_READ_ERROR = 17,   /* the card is no patient's card, refuses its data, or they are damaged */
    PELMORA_READING_CARD_MUTE = 25     /* the card does not answer, or stands upside down */
};

/* What pelmora_reading_version tells the version of. */
enum pelmora_reading_component
{
    PELMORA_READING_LIBRARY = 0,            /* the reading library */
    PELMORA_READING_CARD_TABLE = 1,         /* its table of cards */
    PELMORA_READING_DESTINATION_TABLE = 2,  /* its table of destination organisations */
    PELMORA_READING_AUTHORISATION_TABLE = 3 /* its table of authorisations */
};

/*
 * Room for a text. The caller gives the bytes and how many there are; the library writes its text from the first byte
 * on and sets the length. A text that does not fit is not written: the function returns PELMORA_READING_TOO_LONG, and
 * is not called again with more room. After any failure the bytes and the length are ignored.
 */
struct pelmora_reading_text
{
    char* bytes;     /* never a null pointer; valid until the function returns, cleared by the caller afterwards */
    size_t capacity; /* bytes: 4 MiB for a card, 64 KiB for the readers, 1 KiB for a version */
    size_t length;   /* bytes; 0 when the function is called */
};

/*
 * The interface that the library was written for: it returns PELMORA_READING_INTERFACE, and does nothing else. Called
 * before anything else.
 */
int pelmora_reading_interface(void);

/*
 * Makes the library ready. After a failure the service goes on without the library: with its own one where the user has
 * left it the choice. No reader need be there.
 */
int pelmora_reading_open(void);

/*
 * Undoes pelmora_reading_open: readers, cards and memory are given back, and chosen readers forgotten.
 */
void pelmora_reading_close(void);

/*
 * The version of a component, as people write it ("4.20.1"), without line breaks; empty when there is no such
 * component. It is shown in the preferences.
 */
int pelmora_reading_version(enum pelmora_reading_component component, struct pelmora_reading_text* text);

/*
 * The readers that are connected at this moment, one name a line, each line ended by "\n"; empty when there are none.
 * Names are those of PC/SC, or the library's own. Pelmora shows and compares them without what PC/SC adds to the model
 * (interface, serial number, numbers of the reader and its slot), and takes health cards from the model "Feitian
 * SCR301" only.
 */
int pelmora_reading_readers(struct pelmora_reading_text* text);

/*
 * Chooses the readers of the health card and of the professional's card, by names that pelmora_reading_readers gave,
 * ended by a zero byte. Both may be the same reader. After a failure the earlier choice stays.
 */
int pelmora_reading_choose_readers(const char* vitale_reader, const char* professional_reader);

/*
 * Reads the card that is in the health card's reader at this moment, as an XML document of root element
 * "T_AsnDonneesVitale"; the paths that Pelmora reads in it are told in docs/card-data.md. Whatever encoding the
 * document declares, it is in UTF-8; a document type declaration is refused. Called only after a choice of readers.
 * Nothing of the card may be kept after the return, in memory or elsewhere.
 */
int pelmora_reading_read_card(struct pelmora_reading_text* text);

#ifdef __cplusplus
}
#endif

#endif
