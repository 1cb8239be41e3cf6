#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QPair>
#include <QString>

QByteArray readFile(const QString &path);
void writeFile(const QString &path, const QByteArray &bytes); // and the folders on the way

// A folder's files with their contents; "NAME/" is an empty folder, "NAME@" a link with its target.
using Tree = QMap<QString, QByteArray>;

// What is below the folder, hidden things included, without the file `except`.
Tree treeAt(const QString &folder, const QString &except = {});
// Replaces what is in the folder; an empty tree removes it.
void writeTree(const QString &folder, const Tree &tree);

// A zip archive with these entries, in this order; a name that ends in "/" is a folder's.
using Entries = QList<QPair<QString, QByteArray>>;
QByteArray makeArchive(const Entries &entries);
