#include "Tests/Peers/Peer.h"

#include <unistd.h>

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QSocketNotifier>
#include <QUrl>
#include <stdexcept>

namespace tavel {

namespace {

QString qString(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

QByteArray qBytes(const std::string& bytes) {
    return {bytes.data(), static_cast<int>(bytes.size())};
}

class QtPeer : public Peer {
public:
    QtPeer() {
        qputenv("QT_QPA_PLATFORM", "xcb");
        application_ = std::make_unique<QGuiApplication>(argumentCount_, arguments_);
        clipboard_ = QGuiApplication::clipboard();
    }

    void copyText(const std::string& text) override {
        clipboard_->setText(qString(text));
        requireOwnership();
    }

    void copyHtml(const std::string& html, const std::string& text) override {
        auto data = std::make_unique<QMimeData>();
        data->setHtml(qString(html));
        data->setText(qString(text));
        offer(std::move(data));
    }

    void copyImage(const std::string& file) override {
        const QImage picture(QFile::decodeName(qBytes(file)));
        if (picture.isNull())
            throw std::runtime_error("Not a picture: " + file);
        clipboard_->setImage(picture);
        requireOwnership();
    }

    void copyFiles(const std::vector<std::string>& paths) override {
        QList<QUrl> urls;
        for (const std::string& path : paths)
            urls.append(QUrl::fromLocalFile(QFile::decodeName(qBytes(path))));
        auto data = std::make_unique<QMimeData>();
        data->setUrls(urls);
        offer(std::move(data));
    }

    void copyBytes(const std::string& type, const std::string& bytes) override {
        auto data = std::make_unique<QMimeData>();
        data->setData(qString(type), qBytes(bytes));
        offer(std::move(data));
    }

    void serve() override {
        QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
        QObject::connect(&input, &QSocketNotifier::activated, [&input] {
            if (discardInput())
                return;
            input.setEnabled(false);
            QGuiApplication::quit();
        });
        QGuiApplication::exec();
    }

    std::optional<std::string> pasteText() override {
        const QMimeData* data = clipboard_->mimeData();
        if (data == nullptr || !data->hasText())
            return std::nullopt;
        return data->text().toStdString();
    }

    std::optional<std::string> pasteHtml() override {
        const QMimeData* data = clipboard_->mimeData();
        if (data == nullptr || !data->hasHtml())
            return std::nullopt;
        return data->html().toStdString();
    }

    bool pasteImage(const std::string& file) override {
        const QImage picture = clipboard_->image();
        if (picture.isNull())
            return false;
        if (!picture.save(QFile::decodeName(qBytes(file)), "PNG"))
            throw std::runtime_error("Cannot write " + file);
        return true;
    }

    std::vector<std::string> pasteFiles() override {
        std::vector<std::string> paths;
        const QMimeData* data = clipboard_->mimeData();
        if (data == nullptr || !data->hasUrls())
            return paths;
        for (const QUrl& url : data->urls())
            paths.push_back(url.isLocalFile() ? QFile::encodeName(url.toLocalFile()).toStdString()
                                              : url.toEncoded().toStdString());
        return paths;
    }

    std::optional<std::string> pasteBytes(const std::string& type) override {
        const QMimeData* data = clipboard_->mimeData();
        if (data == nullptr || !data->hasFormat(qString(type)))
            return std::nullopt;
        return data->data(qString(type)).toStdString();
    }

    std::vector<std::string> targets() override {
        std::vector<std::string> names;
        const QMimeData* data = clipboard_->mimeData();
        if (data == nullptr)
            return names;
        for (const QString& name : data->formats())
            names.push_back(name.toStdString());
        return names;
    }

private:
    void offer(std::unique_ptr<QMimeData> data) {
        clipboard_->setMimeData(data.release()); // takes ownership
        requireOwnership();
    }

    void requireOwnership() const {
        if (!clipboard_->ownsClipboard())
            throw std::runtime_error("The clipboard cannot be owned.");
    }

    // QGuiApplication keeps references to these two.
    int argumentCount_ = 1;
    char name_[8] = "qt-peer";
    char* arguments_[2] = {name_, nullptr};
    std::unique_ptr<QGuiApplication> application_;
    QClipboard* clipboard_ = nullptr; // owned by the application
};

} // namespace

} // namespace tavel

int main(int argumentCount, char** arguments) {
    return tavel::runPeer(argumentCount, arguments, [] { return std::make_unique<tavel::QtPeer>(); });
}
