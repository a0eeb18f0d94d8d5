#pragma once

#include <QLatin1StringView>

#include <array>

/// The words of the messages between the application and the card service: the one spelling of each.
namespace ServiceWord {

// Requests. Every value is a text.
inline constexpr QLatin1StringView command{"Command"};
inline constexpr QLatin1StringView mode{"Mode"};
inline constexpr QLatin1StringView vitaleReaderName{"vitale_reader_name"};
inline constexpr QLatin1StringView cpsReaderName{"cps_reader_name"};

// Values of "Command".
inline constexpr QLatin1StringView init{"init"};
inline constexpr QLatin1StringView readersList{"readers_list"};
inline constexpr QLatin1StringView setReaders{"set_readers"};
inline constexpr QLatin1StringView informationsCommand{"informations"};
inline constexpr QLatin1StringView vitaleRead{"vitale_read"};

// Replies. Texts, but for "Readers" (an array of texts) and "Result" (an integer).
inline constexpr QLatin1StringView status{"Status"};
inline constexpr QLatin1StringView embedded{"Embedded"};
inline constexpr QLatin1StringView readers{"Readers"};
inline constexpr QLatin1StringView informations{"Informations"}; // the command's name has no capital
inline constexpr QLatin1StringView vitale{"Vitale"};
inline constexpr QLatin1StringView fundCodeLibelle{"FundCodeLibelle"};
inline constexpr QLatin1StringView result{"Result"};
inline constexpr QLatin1StringView detail{"Detail"}; // of a failure: what people can do, in French, beside its error

// Unsolicited messages. Texts.
inline constexpr QLatin1StringView event{"Event"};
inline constexpr QLatin1StringView state{"State"};

// All keys that the service's messages may have.
inline constexpr std::array replyKeys{status,          embedded, readers, informations, vitale,
                                      fundCodeLibelle, result,   detail,  event,        state};

// Values of "Status": anything but "success" is a failure.
inline constexpr QLatin1StringView success{"success"};
inline constexpr QLatin1StringView error{"error"};

// The value of "Embedded" that says yes.
inline constexpr QLatin1StringView embeddedTrue{"true"};

} // namespace ServiceWord
