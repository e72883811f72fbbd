// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONLOOKS_H
#define FSOFTCONLOOKS_H
class FGenIntComputation;
class FMainWindow;
class FObject;

/// How the objects of an integration look in the window, and what the window can do with them.
namespace FSoftConLooks {
/// The looks of the classes, and what checks them.
void add();
/// Opens the tab of a template file in the workbench of its computation.
void openFile(const FGenIntComputation &computation, const FObject &file);
/// Actions, and the places that problems and results lead to.
void addTo(FMainWindow *window);
} // namespace FSoftConLooks
#endif
