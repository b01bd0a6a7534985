#pragma once

// Errors of the card code are values, not exceptions: a card that cannot be
// built is an everyday event (the user edited the note, Anki is closed), and
// the caller shows the message to the user.

#include "lexicorn/dictionary/records.h"

#include <QJsonObject>
#include <QString>

#include <utility>
#include <variant>

namespace lexicorn {

// An error of domain ERROR_DOMIN ("com.ksw.hookNM") with a numeric code and
// a user-info object whose one key "error" holds the message for the user.
struct CardError {
    QString domain = ERROR_DOMIN;
    int code = int(ErrorCode::structure);
    QJsonObject userInfo;

    static CardError make(ErrorCode code, const QString& message);
    // userInfo["error"] as text.
    QString message() const;
    // {"domain", "code", "error"}: how the command line reports it.
    QJsonObject toJson() const;

    bool operator==(const CardError&) const = default;
};

// A value, or the error that stopped it from being made.
template <typename T>
class [[nodiscard]] CardResult {
public:
    CardResult(T value) : state_(std::in_place_index<0>, std::move(value)) {}
    CardResult(CardError error) : state_(std::in_place_index<1>, std::move(error)) {}

    bool ok() const { return state_.index() == 0; }
    explicit operator bool() const { return ok(); }

    // Only when ok().
    const T& value() const& { return std::get<0>(state_); }
    T& value() & { return std::get<0>(state_); }
    T&& value() && { return std::get<0>(std::move(state_)); }
    const T* operator->() const { return &value(); }
    const T& operator*() const& { return value(); }

    // Only when !ok().
    const CardError& error() const { return std::get<1>(state_); }

private:
    std::variant<T, CardError> state_;
};

}  // namespace lexicorn
