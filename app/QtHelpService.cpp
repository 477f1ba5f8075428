#include "QtHelpService.h"

#include <QDesktopServices>
#include <QFile>
#include <QUrl>

bool QtHelpService::Open(const HelpRequest& request) {
    return QDesktopServices::openUrl(QUrl::fromLocalFile(QFile::decodeName(request.file.c_str())));
}
