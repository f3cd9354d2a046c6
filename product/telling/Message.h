#pragma once

#include "watch/Event.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace telling {

/// An event on its way to a channel.
struct Message {
    watch::Event event;
    std::string host;         ///< empty where it has no name
    std::size_t dropped = 0;  ///< events that the channel was never told of, since the last that it was
};

/// One line of JSON with its line feed: that of the event, and "dropped" where it is not 0.
[[nodiscard]] std::string JsonLineOf(const Message& message);

/// The same as "MNGSRVRAID_SERIAL=7K00025200C4" and so on, also those that are empty. The values are
/// printable and of bounded size.
[[nodiscard]] std::vector<std::string> FieldsOf(const Message& message);

/// "storage7: CRITICAL began: controller 0, RG2, LD4: OFFLINE", printable.
[[nodiscard]] std::string TitleOf(const Message& message);

/// "3 events before this one were dropped, because too many waited for this channel."; empty where none was.
[[nodiscard]] std::string DroppedNote(const Message& message);

/// A text of somebody else's, printable and short enough for a message.
[[nodiscard]] std::string OneShortLine(std::string_view text);

/// The same of its last line that is not empty.
[[nodiscard]] std::string LastLineOf(const std::string& text);

}  // namespace telling
