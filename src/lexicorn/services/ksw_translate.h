#pragma once

#include <QString>

#include <QCache>

#include <atomic>
#include <mutex>
#include <chrono>

namespace lexicorn {

// Translates an English sentence into Chinese through a web service chosen
// by the engine number. Each call blocks its caller until the service answers
// or its time-out runs out, so the reader calls it from a background queue.
// The answer is never a null string; it is empty when nothing was obtained.
//
// User defaults:
//   SPECIAL_ENGINE  the engine number (see Engine); set to 1 on first use
//                   when absent.
//   SPECIAL_HOST_*  the host of each service (see translation_hosts.h), read
//                   at each request.
class KSWTranslate {
public:
    enum Engine : unsigned {
        automatic = 0,            // Google mainland, Youdao, Google international, Eudic: the first that answers
        googleMainland = 1,
        youdao = 2,
        googleInternational = 3,
        eudic = 4,
        // 5 and above: no translation, and no request.
    };

    static constexpr std::chrono::milliseconds googleTimeout{1000};
    static constexpr std::chrono::milliseconds youdaoTimeout{1000};
    static constexpr std::chrono::milliseconds eudicTimeout{1000};
    static constexpr std::chrono::milliseconds deeplTimeout{3000};

    // The one the application uses, made on first use.
    static KSWTranslate& shareInstance();

    // Reads the engine from the user defaults, storing 1 when there is none.
    // The application goes through shareInstance(); tests make their own.
    KSWTranslate();

    unsigned engine() const { return engine_.load(); }
    // Changes the engine of this instance only; the settings panel stores the
    // user's choice under SPECIAL_ENGINE itself.
    void setEngine(unsigned engine) { engine_.store(engine); }

    // The translation by the current engine.
    QString translatorEn_(const QString& sentence);
    // The translation by the given engine, whatever the current one is. A
    // sentence this instance translated before with that engine is answered
    // from memory (the last rememberedTranslations ones), so looking up
    // several words of one sentence waits for the network only once.
    QString translatorEn_withEngine_(const QString& sentence, unsigned engine);
    static constexpr int rememberedTranslations = 512;

    // One service each. Google mainland when googleCN is true, else international.
    QString cnGoogleFromEn_googleCN_(const QString& sentence, bool googleCN);
    QString cnYoudaoFromEn_(const QString& sentence);
    QString cnOluFromEn_(const QString& sentence);
    // DeepL is deliberately reachable by no engine number: its request
    // carries fixed sample sentences (see deepl_request.h).
    QString cnDeeplFromEn_(const QString& sentence);

private:
    QString translateUncached(const QString& sentence, unsigned engine);

    std::atomic<unsigned> engine_{googleMainland};
    std::mutex memoryMutex_;
    QCache<QString, QString> memory_{rememberedTranslations};
};

}  // namespace lexicorn
