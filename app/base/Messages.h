#pragma once

#include "app/base/Interface.h"

#include <string>
#include <string_view>

namespace wagemill {

enum class MessageIcon { None, Information, Warning };
enum class MessageButtons { Ok, YesNo };
enum class MessageAnswer { Ok, Yes, No };

struct Message {
    std::string text;  ///< plain UTF-8 text; "\r\n", "\n" and a bare "\r" are line breaks
    std::string title; ///< empty: the application title
    MessageIcon icon = MessageIcon::None;
    MessageButtons buttons = MessageButtons::Ok;
};

/// The one way to message boxes. A box is modal: show() returns when the user has answered.
class Messages : public Interface {
public:
    virtual MessageAnswer show(const Message& message) = 0;
};

/// The program's message boxes; set once at start, and by tests. Never owned here.
void setMessages(Messages* messages);
/// Shows a message; without message boxes (before the start has set them) it goes to the error output.
MessageAnswer showMessage(const Message& message);

/// What a system says of a failure, without the full stop at its end: a sentence of ours goes on after it.
std::string withoutFullStop(std::string reason);

} // namespace wagemill
