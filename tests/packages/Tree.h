#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QPair>
#include <QString>

// A folder's files with their contents; "NAME/" is a folder, "NAME@" a link and what it leads to.
using Tree = QMap<QString, QByteArray>;

// What is below the folder, hidden things included; empty folders as "NAME/".
Tree treeAt(const QString &folder);
void writeTree(const QString &folder, const Tree &tree);

// A zip archive with these entries, in this order; a name that ends in "/" is a folder's.
using Entries = QList<QPair<QString, QByteArray>>;
QByteArray makeArchive(const Entries &entries);
