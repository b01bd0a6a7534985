#pragma once

#include "lexicorn/anki/ksw_ankiconnect.h"

#include <QString>

#include <optional>

namespace lexicorn::cli {

// Points the AnkiConnect client at --ip's address for one command; the
// stored address is put back when the command ends.
class ScopedAnkiAddress {
public:
    explicit ScopedAnkiAddress(const std::optional<QString>& address)
        : anki_(KSWAnkiconnect::shareInstance()), stored_(anki_.ipString()), active_(address.has_value())
    {
        if (address)
            anki_.setIpString_(*address);
    }
    ~ScopedAnkiAddress()
    {
        if (active_)
            anki_.setIpString_(stored_);
    }
    ScopedAnkiAddress(const ScopedAnkiAddress&) = delete;
    ScopedAnkiAddress& operator=(const ScopedAnkiAddress&) = delete;

private:
    KSWAnkiconnect& anki_;
    QString stored_;
    bool active_;
};

}  // namespace lexicorn::cli
