#include "host/pdf/page_renderer.h"

#include <poppler-qt6.h>

#include <QVariant>

#include <algorithm>
#include <cmath>

namespace lexicorn::host {

QRect requestPixels(const RenderRequest& r)
{
    const int left = int(std::floor(r.part.left() * r.scale));
    const int top = int(std::floor(r.part.top() * r.scale));
    const int right = int(std::ceil(r.part.right() * r.scale));
    const int bottom = int(std::ceil(r.part.bottom() * r.scale));
    return {left, top, std::max(1, right - left), std::max(1, bottom - top)};
}

QRectF requestCoverage(const RenderRequest& r)
{
    const QRect px = requestPixels(r);
    return {px.x() / r.scale, px.y() / r.scale, px.width() / r.scale, px.height() / r.scale};
}

PageRenderer::PageRenderer(QObject* parent) : QObject(parent)
{
    qRegisterMetaType<RenderedPage>();
    qRegisterMetaType<std::vector<QSizeF>>();
    thread_ = std::thread([this] { run(); });
}

PageRenderer::~PageRenderer()
{
    {
        std::lock_guard lock(mutex_);
        stop_ = true;
        abortCurrent_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void PageRenderer::open(const QString& path, std::uint64_t documentId)
{
    {
        std::lock_guard lock(mutex_);
        pendingPath_ = path;
        documentId_ = documentId;
        queue_.clear();
        abortCurrent_ = true;
    }
    wake_.notify_all();
}

void PageRenderer::close()
{
    open(QString(), 0);
}

void PageRenderer::setRequests(std::uint64_t documentId, std::vector<RenderRequest> requests)
{
    {
        std::lock_guard lock(mutex_);
        if (documentId != documentId_)
            return;
        if (current_) {
            auto same = std::find(requests.begin(), requests.end(), *current_);
            if (same == requests.end())
                abortCurrent_ = true;  // scrolled or zoomed away from it
            else if (!abortCurrent_)
                requests.erase(same);  // already being drawn
        }
        queue_ = std::move(requests);
    }
    wake_.notify_all();
}

QImage PageRenderer::renderPage(const Poppler::Page& page, const RenderRequest& request,
                                const std::function<bool()>& abort)
{
    const double dpi = 72.0 * request.scale;
    int x = -1, y = -1, w = -1, h = -1;
    if (request.part != QRectF(QPointF(0, 0), page.pageSizeF())) {
        const QRect px = requestPixels(request);
        x = px.x(), y = px.y(), w = px.width(), h = px.height();
    }
    QImage image;
    if (abort) {
        // Poppler asks this between drawing operations; the payload carries the
        // address of the caller's function.
        const auto shouldAbort = [](const QVariant& payload) {
            return (*reinterpret_cast<const std::function<bool()>*>(payload.value<quintptr>()))();
        };
        image = page.renderToImage(dpi, dpi, x, y, w, h, Poppler::Page::Rotate0, nullptr, nullptr, shouldAbort,
                                   QVariant::fromValue(quintptr(&abort)));
    } else {
        image = page.renderToImage(dpi, dpi, x, y, w, h);
    }
    image.setDevicePixelRatio(request.devicePixelRatio);
    return image;
}

// Poppler reads a page's dictionary without parsing its content, some 20 µs
// a page. A page with no usable size is shown as a letter page.
static std::vector<QSizeF> pageSizesOf(const Poppler::Document& document)
{
    std::vector<QSizeF> sizes(std::size_t(std::max(0, document.numPages())), QSizeF(612, 792));
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        if (std::unique_ptr<Poppler::Page> page = document.page(int(i))) {
            const QSizeF size = page->pageSizeF();
            if (size.width() >= 1 && size.height() >= 1)
                sizes[i] = size;
        }
    }
    return sizes;
}

void PageRenderer::run()
{
    std::unique_ptr<Poppler::Document> document;
    std::uint64_t loadedId = 0;
    bool sizesToRead = false;
    const std::function<bool()> abort = [this] { return abortCurrent_.load(std::memory_order_relaxed); };
    for (;;) {
        std::optional<QString> path;
        RenderRequest request;
        std::uint64_t id = 0;
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return stop_ || pendingPath_ || !queue_.empty(); });
            if (stop_)
                return;
            id = documentId_;
            if (pendingPath_) {
                path = std::move(*pendingPath_);
                pendingPath_.reset();
            } else {
                request = queue_.front();
                queue_.erase(queue_.begin());
                current_ = request;
                abortCurrent_ = false;
            }
        }
        if (path) {
            document.reset();
            if (!path->isEmpty()) {
                document = Poppler::Document::load(*path);
                if (document && document->isLocked())
                    document.reset();
                if (document) {
                    document->setRenderHint(Poppler::Document::Antialiasing, true);
                    document->setRenderHint(Poppler::Document::TextAntialiasing, true);
                }
            }
            loadedId = id;
            sizesToRead = document != nullptr;
            continue;
        }
        QImage image;
        if (document && loadedId == id && request.pageIndex >= 0 && request.pageIndex < document->numPages()) {
            if (std::unique_ptr<Poppler::Page> page = document->page(request.pageIndex))
                image = renderPage(*page, request, abort);
        }
        bool deliver = false;
        {
            std::lock_guard lock(mutex_);
            current_.reset();
            deliver = !stop_ && !abortCurrent_ && documentId_ == id;
        }
        // A page that cannot be drawn is delivered as a null image so the view
        // stops asking for it.
        if (deliver)
            emit pageRendered(RenderedPage{id, request, std::move(image)});
        // Every page's size is read after the first page asked for is drawn,
        // so that page shows as early as it can.
        if (sizesToRead && document && loadedId == id) {
            sizesToRead = false;
            emit pageSizesRead(id, pageSizesOf(*document));
        }
    }
}

void PageImageCache::insert(Entry entry)
{
    const int page = entry.request.pageIndex;
    if (auto it = map_.find(page); it != map_.end()) {
        bytes_ -= std::size_t(it->second->image.sizeInBytes());
        order_.erase(it->second);
        map_.erase(it);
    }
    bytes_ += std::size_t(entry.image.sizeInBytes());
    order_.push_front(std::move(entry));
    map_[page] = order_.begin();
    trim();
}

const PageImageCache::Entry* PageImageCache::use(int pageIndex)
{
    auto it = map_.find(pageIndex);
    if (it == map_.end())
        return nullptr;
    order_.splice(order_.begin(), order_, it->second);
    return &*it->second;
}

void PageImageCache::clear()
{
    order_.clear();
    map_.clear();
    bytes_ = 0;
}

void PageImageCache::setLimit(std::size_t limitBytes)
{
    limit_ = limitBytes;
    trim();
}

void PageImageCache::trim()
{
    // The newest image stays even when it alone is over the limit.
    while (bytes_ > limit_ && order_.size() > 1) {
        bytes_ -= std::size_t(order_.back().image.sizeInBytes());
        map_.erase(order_.back().request.pageIndex);
        order_.pop_back();
    }
}

}  // namespace lexicorn::host
