#pragma once

#include <QAccessible>

class QWidget;

namespace clipwren {

// Tells those who hear the window what a plain widget is; Qt takes it for a filler. Before it is first asked
// for.
void setAccessibleRole(QWidget& widget, QAccessible::Role role);

} // namespace clipwren
