#include "host/ui/dialog_alerts.h"

#include "foundation/alerts.h"

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace lexicorn::host::ui {

void installDialogAlertPresenter(QWidget* parent)
{
    setAlertPresenter([window = QPointer<QWidget>(parent)](const QString& title, const QString& message,
                                                         const QString& button, std::function<void()> acknowledged) {
        auto* box = new QMessageBox(window.data());
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->setWindowModality(window ? Qt::WindowModal : Qt::ApplicationModal);
        box->setIcon(QMessageBox::NoIcon);
        box->setWindowTitle(title);
        box->setText(message);
        box->addButton(button.isEmpty() ? QStringLiteral("OK") : button, QMessageBox::AcceptRole);
        QObject::connect(box, &QMessageBox::finished, box, [acknowledged = std::move(acknowledged)](int) {
            if (acknowledged)
                acknowledged();
        });
        box->open();
    });
}

}  // namespace lexicorn::host::ui
