#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <stdexcept>

namespace lexicorn::cli {

// A mistake in how the command was called; main prints it and exits with status 2.
class UsageError : public std::runtime_error {
public:
    explicit UsageError(const QString& message) : std::runtime_error(message.toStdString()) {}
};

// A failure while doing the work (missing file, unreadable dictionary); exit status 1.
class CommandError : public std::runtime_error {
public:
    explicit CommandError(const QString& message) : std::runtime_error(message.toStdString()) {}
};

// The words after the command name. Options are taken out by name; what is
// left must be positional arguments, else finish() reports the stray option.
class Arguments {
public:
    explicit Arguments(QStringList words) : words_(std::move(words)) {}

    // "--name VALUE" (or "--name=VALUE"); the last one given wins.
    std::optional<QString> option(const QString& name);
    // "--name" with no value.
    bool flag(const QString& name);
    // The remaining words, after checking that no option is left among them.
    QStringList positionals();

private:
    QStringList words_;
};

// Applies "--home DIR": checks the folder and makes it the home directory.
void applyHomeOption(Arguments& arguments);

}  // namespace lexicorn::cli
