#include "framework/data_exchange.h"

void DDX_Control(const CDataExchange& exchange, int id, CWnd& control) {
  control.Attach(GetDlgItem(exchange.dialog, id));
}

void DDX_Check(const CDataExchange& exchange, int id, int& value) {
  if (exchange.saving) {
    value = IsDlgButtonChecked(exchange.dialog, id) == BST_CHECKED ? 1 : 0;
  } else {
    CheckDlgButton(exchange.dialog, id, value != 0 ? BST_CHECKED : BST_UNCHECKED);
  }
}
