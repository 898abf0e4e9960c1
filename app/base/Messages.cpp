#include "app/base/Messages.h"

#include <iostream>

namespace wagemill {

namespace {

Messages* programMessages = nullptr;

} // namespace

void setMessages(Messages* messages)
{
    programMessages = messages;
}

MessageAnswer showMessage(const Message& message)
{
    if (programMessages != nullptr)
        return programMessages->show(message);
    std::cerr << message.text << '\n';
    return message.buttons == MessageButtons::Ok ? MessageAnswer::Ok : MessageAnswer::No;
}

std::string withoutFullStop(std::string reason)
{
    reason.erase(reason.find_last_not_of(". \r\n") + 1);
    return reason;
}

} // namespace wagemill
