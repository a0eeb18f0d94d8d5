#pragma once

#include <QLatin1StringView>

#include <array>

/// Words of the messages between the application and the card service.
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

// Replies. Texts, except for "Readers" (an array of texts) and "Result" (an integer).
inline constexpr QLatin1StringView status{"Status"};
inline constexpr QLatin1StringView embedded{"Embedded"};
inline constexpr QLatin1StringView readers{"Readers"};
inline constexpr QLatin1StringView informations{"Informations"}; // the command's name has no capital
inline constexpr QLatin1StringView vitale{"Vitale"};
inline constexpr QLatin1StringView fundCodeLibelle{"FundCodeLibelle"};
inline constexpr QLatin1StringView result{"Result"};
inline constexpr QLatin1StringView detail{"Detail"}; // of a failure: what users can do, in French

// Unsolicited messages. Texts.
inline constexpr QLatin1StringView event{"Event"};
inline constexpr QLatin1StringView state{"State"};

// The value of "Event" in a message about the card reader, and values of its "State".
inline constexpr QLatin1StringView readerEvent{"reader"};
inline constexpr QLatin1StringView noService{"no_service"};
inline constexpr QLatin1StringView noReader{"no_reader"};
inline constexpr QLatin1StringView otherReader{"other_reader"};
inline constexpr QLatin1StringView emptyReader{"empty"};
inline constexpr QLatin1StringView cardPresent{"card"};
inline constexpr QLatin1StringView muteCard{"mute_card"};

// All keys of the service's messages.
inline constexpr std::array replyKeys{status,          embedded, readers, informations, vitale,
                                      fundCodeLibelle, result,   detail,  event,        state};

// Values of "Status". Every value except "success" is a failure.
inline constexpr QLatin1StringView success{"success"};
inline constexpr QLatin1StringView error{"error"};

// The value of "Embedded" for yes.
inline constexpr QLatin1StringView embeddedTrue{"true"};

} // namespace ServiceWord
