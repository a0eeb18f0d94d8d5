#pragma once

#include "service/ReadingLibrary.h"
#include "service/pcsc/ReaderEvents.h"

#include <memory>
#include <thread>

/// The state of the readers of the accepted model. Of several, one with a card counts first, then one with a mute card.
[[nodiscard]] CardReaderState cardReaderState(const ReaderEvents::Readers& readers);

/// Reports the state of the accepted readers on its own thread: once, then when it changes. A card that takes the place
/// of another one is reported as an empty reader, then a card.
class CardReaderWatch final : public ReaderWatch
{
public:
    CardReaderWatch(std::unique_ptr<ReaderEvents> events, ReaderReport report);
    CardReaderWatch(const CardReaderWatch&) = delete;
    CardReaderWatch& operator=(const CardReaderWatch&) = delete;
    /// Ends the thread. One that hangs in a call to PC/SC is left behind after a second.
    ~CardReaderWatch() override;

private:
    class Loop;

    std::shared_ptr<Loop> m_loop; // shared with the thread
    std::thread m_thread;
};
