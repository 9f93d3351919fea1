#include "platform/QtDialogs.h"

#include <QDesktopServices>
#include <QTextBrowser>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QProcess>
#include <QUrl>

namespace tv {

int QtDialogs::repeatsOf(const QString& text, const QString& title) const {
    const auto it = open_.find({title, text});
    return it == open_.end() ? 0 : it->second.second;
}

MsgAnswer QtDialogs::messageBox(const QString& text, const QString& title, MsgButtons buttons, MsgIcon icon) {
    const std::pair<QString, QString> key{title, text};
    if (buttons == MsgButtons::Ok) {
        if (auto it = open_.find(key); it != open_.end()) {
            const int n = ++it->second.second;
            it->second.first->setInformativeText(QStringLiteral("(%1 times)").arg(n + 1));
            return MsgAnswer::Ok;
        }
    }
    QMessageBox box(parent_);
    box.setWindowTitle(title);
    box.setText(text);
    switch (icon) {
        case MsgIcon::None: box.setIcon(QMessageBox::NoIcon); break;
        case MsgIcon::Information: box.setIcon(QMessageBox::Information); break;
        case MsgIcon::Warning: box.setIcon(QMessageBox::Warning); break;
        case MsgIcon::Critical: box.setIcon(QMessageBox::Critical); break;
        case MsgIcon::Question: box.setIcon(QMessageBox::Question); break;
    }
    // The first button is the default, and closing the box answers what its Cancel (or last) button would.
    QMessageBox::StandardButtons set;
    QMessageBox::StandardButton first = QMessageBox::Ok, escape = QMessageBox::Ok;
    switch (buttons) {
        case MsgButtons::Ok: set = QMessageBox::Ok; break;
        case MsgButtons::OkCancel:
            set = QMessageBox::Ok | QMessageBox::Cancel;
            escape = QMessageBox::Cancel;
            break;
        case MsgButtons::YesNo:
            set = QMessageBox::Yes | QMessageBox::No;
            first = QMessageBox::Yes;
            escape = QMessageBox::No;
            break;
        case MsgButtons::YesNoCancel:
            set = QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
            first = QMessageBox::Yes;
            escape = QMessageBox::Cancel;
            break;
        case MsgButtons::RetryCancel:
            set = QMessageBox::Retry | QMessageBox::Cancel;
            first = QMessageBox::Retry;
            escape = QMessageBox::Cancel;
            break;
    }
    box.setStandardButtons(set);
    box.setDefaultButton(first);
    box.setEscapeButton(escape);
    if (buttons == MsgButtons::Ok) open_[key] = {&box, 0};
    const int result = box.exec();
    if (buttons == MsgButtons::Ok) open_.erase(key);
    switch (result) {
        case QMessageBox::Cancel: return MsgAnswer::Cancel;
        case QMessageBox::Yes: return MsgAnswer::Yes;
        case QMessageBox::No: return MsgAnswer::No;
        case QMessageBox::Retry: return MsgAnswer::Retry;
        case QMessageBox::Ok: return MsgAnswer::Ok;
        default: break;
    }
    return escape == QMessageBox::Ok ? MsgAnswer::Ok : escape == QMessageBox::No ? MsgAnswer::No : MsgAnswer::Cancel;
}

QString QtDialogs::openFile(const QString& title, const QString& folder, const QString& filter) {
    return QFileDialog::getOpenFileName(parent_, title, folder, filter);
}

QString QtDialogs::saveFile(const QString& title, const QString& folder, const QString& filter) {
    return QFileDialog::getSaveFileName(parent_, title, folder, filter);
}

QString QtDialogs::pickFolder(const QString& title, const QString& start) {
    return QFileDialog::getExistingDirectory(parent_, title, start, QFileDialog::ShowDirsOnly);
}

bool QtDialogs::openWithDefault(const QString& path) {
    // A web or mail address goes as it is; anything else is a file.
    const QUrl url = path.contains(QLatin1String("://")) || path.startsWith(QLatin1String("mailto:"))
                         ? QUrl(path)
                         : QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    if (QDesktopServices::openUrl(url)) return true;
    // A desktop with nothing to open web pages still shows our own help pages, in a window of ours.
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (!url.isLocalFile() || (suffix != QLatin1String("htm") && suffix != QLatin1String("html")) ||
        !QFileInfo::exists(path))
        return false;
    auto* page = new QTextBrowser;
    page->setAttribute(Qt::WA_DeleteOnClose);
    page->setOpenExternalLinks(true);
    page->setSource(url);
    page->setWindowTitle(page->documentTitle().isEmpty() ? QFileInfo(path).completeBaseName() : page->documentTitle());
    page->resize(640, 520);
    page->show();
    return true;
}

bool QtDialogs::startProgram(const QString& program, const QStringList& args) {
    return QProcess::startDetached(program, args);
}

}  // namespace tv
