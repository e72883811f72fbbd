// SPDX-License-Identifier: Apache-2.0
#include <QRegExp>
#include <QString>
#include <QTextStream>
#include <QVariant>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>
