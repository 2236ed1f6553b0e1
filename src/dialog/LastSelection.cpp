#include "dialog/LastSelection.h"

#include "files/TextFile.h"
#include "host/SuiteServices.h"

namespace dialog {

std::string LastSelectionPath() {
    return suite::PathJoin(suite::GetZandrixLocalInstallPath(), "LocalData/PlcLibEdit.dat");
}

LastSelection ReadLastSelection(const std::string& path) {
    LastSelection selection;
    const auto lines = files::ReadLines(path);
    if (!lines) {
        return selection;
    }
    std::string* fields[] = {&selection.manufacturer, &selection.series, &selection.type,
                             &selection.code};
    for (size_t i = 0; i < 4 && i < lines->size(); ++i) {
        *fields[i] = (*lines)[i];
    }
    return selection;
}

bool WriteLastSelection(const LastSelection& selection, const std::string& path) {
    const std::string content = selection.manufacturer + "\n" + selection.series + "\n" +
                                selection.type + "\n" + selection.code + "\n";
    files::WriteOptions options;
    options.createFolders = true;  // LocalData is the suite's own folder
    return files::WriteWhole(path, content, nullptr, options);
}

}  // namespace dialog
