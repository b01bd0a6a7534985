#include "cli/progress_bar.h"

#include <cstdio>
#include <unistd.h>

namespace lexicorn::cli {

ProgressBar::ProgressBar(QString label) : label_(std::move(label)), enabled_(isatty(STDERR_FILENO) == 1) {}

ProgressBar::~ProgressBar()
{
    if (enabled_ && lastPercent_ >= 0)
        std::fputs("\n", stderr);
}

void ProgressBar::setLabel(QString label)
{
    label_ = std::move(label);
    lastPercent_ = -1;
    update(0, 1);
}

void ProgressBar::update(size_t done, size_t total)
{
    if (!enabled_ || total == 0)
        return;
    const int percent = int(done * 100 / total);
    if (percent == lastPercent_)
        return;
    lastPercent_ = percent;
    constexpr int width = 30;
    const int filled = percent * width / 100;
    const QByteArray bar = QByteArray(filled, '#') + QByteArray(width - filled, '.');
    std::fprintf(stderr, "\r%-12s [%s] %3d%%", label_.toUtf8().constData(), bar.constData(), percent);
    std::fflush(stderr);
}

}  // namespace lexicorn::cli
