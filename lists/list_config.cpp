#include "lists/list_config.h"

IListConfig::IListConfig() {
    static const int registered = qRegisterMetaType<ListEditRequest>("ListEditRequest");
    Q_UNUSED(registered)
}

bool IListConfig::isCellEditable(int row, int column) const {
    return row >= 0 && row < rowCount() && column >= 0 && column < columnCount() && this->column(column).editable;
}

ListEditRequest IListConfig::requestFor(int row, int column) const {
    const ListColumn described = this->column(column);
    ListEditRequest request;
    request.row = row;
    request.column = column;
    request.kind = described.kind;
    request.title = described.title;
    return request;
}

bool IListConfig::fail(QString& error, const char* sentence) {
    error = QLatin1String(sentence);
    return false;
}
