// A driver of pcscd for one reader with one slot. It asks a program of the test whether there is a card, and for the
// card's answers to power and to commands. Its device is that program's UNIX socket. When the socket does not exist,
// the reader is unplugged. Each request is a connection of its own: a letter, and the data. The answer is the number of
// the result in two bytes, the low byte first, and the data.
#include <ifdhandler.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

enum
{
    LongestMessage = 4096,
    CodeSize = 2
};

static struct sockaddr_un device = {.sun_family = AF_UNIX};

static int connectToDevice(void)
{
    const struct timeval patience = {.tv_sec = 5};
    const int connection = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (connection < 0)
        return -1;
    if (setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience) == 0 &&
        connect(connection, (const struct sockaddr*)&device, sizeof device) == 0)
        return connection;
    close(connection);
    return -1;
}

// Returns the result's number. The data are copied to the answer. Its size is the capacity before the call, and the
// length of the data after it.
static RESPONSECODE ask(char request, const UCHAR* data, DWORD size, UCHAR* answer, DWORD* answerSize)
{
    UCHAR message[LongestMessage];
    const int connection = connectToDevice();
    if (connection < 0)
        return IFD_NO_SUCH_DEVICE;
    message[0] = (UCHAR)request;
    if (size > 0 && size < sizeof message)
        memcpy(message + 1, data, size);
    ssize_t count = -1;
    if (size < sizeof message && send(connection, message, size + 1, MSG_NOSIGNAL) >= 0)
        count = recv(connection, message, sizeof message, 0);
    close(connection);
    if (count < CodeSize)
        return IFD_NO_SUCH_DEVICE;
    const DWORD rest = (DWORD)count - CodeSize;
    if (answerSize != NULL && rest > *answerSize)
        return IFD_ERROR_INSUFFICIENT_BUFFER;
    if (answerSize != NULL) {
        memcpy(answer, message + CodeSize, rest);
        *answerSize = rest;
    }
    return message[0] + 256L * message[1];
}

RESPONSECODE IFDHCreateChannelByName(DWORD Lun, LPSTR DeviceName)
{
    (void)Lun;
    const int length = snprintf(device.sun_path, sizeof device.sun_path, "%s", DeviceName);
    return length < (int)sizeof device.sun_path ? IFD_SUCCESS : IFD_COMMUNICATION_ERROR;
}

RESPONSECODE IFDHCreateChannel(DWORD Lun, DWORD Channel)
{
    (void)Lun;
    (void)Channel;
    return IFD_COMMUNICATION_ERROR;
}

RESPONSECODE IFDHCloseChannel(DWORD Lun)
{
    (void)Lun;
    return IFD_SUCCESS;
}

RESPONSECODE IFDHGetCapabilities(DWORD Lun, DWORD Tag, PDWORD Length, PUCHAR Value)
{
    (void)Lun;
    if (*Length < 1 || (Tag != TAG_IFD_SLOTS_NUMBER && Tag != TAG_IFD_SIMULTANEOUS_ACCESS))
        return IFD_ERROR_TAG;
    *Length = 1;
    *Value = 1;
    return IFD_SUCCESS;
}

RESPONSECODE IFDHSetCapabilities(DWORD Lun, DWORD Tag, DWORD Length, PUCHAR Value)
{
    (void)Lun;
    (void)Tag;
    (void)Length;
    (void)Value;
    return IFD_NOT_SUPPORTED;
}

RESPONSECODE IFDHSetProtocolParameters(DWORD Lun, DWORD Protocol, UCHAR Flags, UCHAR PTS1, UCHAR PTS2, UCHAR PTS3)
{
    (void)Lun;
    (void)Protocol;
    (void)Flags;
    (void)PTS1;
    (void)PTS2;
    (void)PTS3;
    return IFD_SUCCESS;
}

RESPONSECODE IFDHPowerICC(DWORD Lun, DWORD Action, PUCHAR Atr, PDWORD AtrLength)
{
    (void)Lun;
    *AtrLength = MAX_ATR_SIZE;
    return ask(Action == IFD_POWER_DOWN ? 'D' : 'U', NULL, 0, Atr, AtrLength);
}

RESPONSECODE IFDHTransmitToICC(DWORD Lun, SCARD_IO_HEADER SendPci, PUCHAR TxBuffer, DWORD TxLength, PUCHAR RxBuffer,
                               PDWORD RxLength, PSCARD_IO_HEADER RecvPci)
{
    (void)Lun;
    (void)RecvPci;
    (void)SendPci;
    const RESPONSECODE result = ask('T', TxBuffer, TxLength, RxBuffer, RxLength);
    if (result != IFD_SUCCESS)
        *RxLength = 0;
    return result;
}

RESPONSECODE IFDHICCPresence(DWORD Lun)
{
    (void)Lun;
    return ask('P', NULL, 0, NULL, NULL);
}

RESPONSECODE IFDHControl(DWORD Lun, DWORD dwControlCode, PUCHAR TxBuffer, DWORD TxLength, PUCHAR RxBuffer,
                         DWORD RxLength, LPDWORD pdwBytesReturned)
{
    (void)Lun;
    (void)dwControlCode;
    (void)TxBuffer;
    (void)TxLength;
    (void)RxBuffer;
    (void)RxLength;
    *pdwBytesReturned = 0;
    return IFD_NOT_SUPPORTED;
}
