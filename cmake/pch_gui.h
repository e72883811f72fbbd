// SPDX-License-Identifier: Apache-2.0
#include <QAbstractItemModel>
#include <QApplication>
#include <QGraphicsScene>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>
