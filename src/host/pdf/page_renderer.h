#pragma once

#include <QImage>
#include <QObject>
#include <QRect>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <unordered_map>
#include <vector>

namespace Poppler {
class Page;
}

namespace lexicorn::host {

// One page image to make: the page, the pixels per point of the image
// (zoom × device-pixel ratio), the part of the page in points (the whole page
// unless a full image would be too large) and the ratio the image is tagged with.
struct RenderRequest {
    int pageIndex = 0;
    double scale = 1.0;
    QRectF part;  // never empty: the whole page is QRectF(QPointF(), pageSize)
    double devicePixelRatio = 1.0;

    bool operator==(const RenderRequest&) const = default;
};

// The pixel box of a request's image in the page drawn at request.scale, and
// the part of the page in points that box covers (the request's part rounded
// out to whole pixels).
QRect requestPixels(const RenderRequest& request);
QRectF requestCoverage(const RenderRequest& request);

struct RenderedPage {
    std::uint64_t documentId = 0;
    RenderRequest request;
    QImage image;  // device-pixel ratio set; null when the page could not be drawn
};

// Renders pages on its own thread from its own Poppler document (a Poppler
// document must not be used from two threads). The GUI replaces the whole
// list of wanted pages whenever the view changes; whatever was queued and is
// no longer wanted is dropped unrendered, and a render in progress that is no
// longer wanted is aborted. Finished images arrive on the receiver's thread
// through the queued signal pageRendered.
class PageRenderer : public QObject {
    Q_OBJECT
public:
    explicit PageRenderer(QObject* parent = nullptr);
    ~PageRenderer() override;

    // Loads the file on the worker thread; requests name the document by id so
    // images of a closed document are recognised and dropped.
    void open(const QString& path, std::uint64_t documentId);
    void close();
    // Replaces the queue: requests are rendered in the order given.
    void setRequests(std::uint64_t documentId, std::vector<RenderRequest> requests);

    // Draws one request with the given page, antialiased; null image when
    // abort returns true before the page is done. Used by the worker and by
    // benchmarks that time the render call alone.
    static QImage renderPage(const Poppler::Page& page, const RenderRequest& request,
                             const std::function<bool()>& abort = {});

signals:
    void pageRendered(const lexicorn::host::RenderedPage& page);
    // Every page's size in points, read on the worker once the document is
    // loaded, so the GUI never walks a thousand pages itself.
    void pageSizesRead(std::uint64_t documentId, const std::vector<QSizeF>& sizes);

private:
    void run();
    bool stillWanted(const RenderRequest& request) const;  // caller holds mutex_

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    bool stop_ = false;
    // Document to load next (set by open, taken by the worker).
    std::optional<QString> pendingPath_;
    std::uint64_t documentId_ = 0;        // the document requests are for
    std::vector<RenderRequest> queue_;
    std::optional<RenderRequest> current_;
    std::atomic<bool> abortCurrent_{false};
    std::thread thread_;
};

// The GUI side's store of page images, least recently used dropped first once
// the images together take more than the limit in bytes. One image per page:
// a newer image (another zoom, another part) replaces the older one.
class PageImageCache {
public:
    explicit PageImageCache(std::size_t limitBytes) : limit_(limitBytes) {}

    struct Entry {
        RenderRequest request;
        QImage image;
    };
    void insert(Entry entry);
    // The page's image, marked as just used; null when there is none.
    const Entry* use(int pageIndex);
    void clear();
    std::size_t bytes() const { return bytes_; }
    std::size_t size() const { return map_.size(); }
    void setLimit(std::size_t limitBytes);

private:
    void trim();

    std::size_t limit_;
    std::size_t bytes_ = 0;
    std::list<Entry> order_;  // most recently used first
    std::unordered_map<int, std::list<Entry>::iterator> map_;
};

}  // namespace lexicorn::host

Q_DECLARE_METATYPE(lexicorn::host::RenderedPage)

// The windows and their benchmarks name the renderer from their own namespace.
namespace lexicorn::host::ui {
using host::PageImageCache;
using host::PageRenderer;
using host::RenderedPage;
using host::RenderRequest;
using host::requestCoverage;
using host::requestPixels;
}  // namespace lexicorn::host::ui
