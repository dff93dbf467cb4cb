#include "pages/property_prop_page.h"

#include <algorithm>

#include "pages/chapter_line.h"
#include "pages/resource_ids.h"

namespace tarvex {

namespace {

/// An array for IModuleConfig to fill, whose names are ours from then on.
class ChapterArray {
 public:
  explicit ChapterArray(ULONG count) : m_entries(count) {}
  ~ChapterArray() {
    for (const ChapterEntry& entry : m_entries) SysFreeString(entry.name);
  }
  ChapterArray(const ChapterArray&) = delete;
  ChapterArray& operator=(const ChapterArray&) = delete;

  std::vector<ChapterEntry>& Entries() noexcept { return m_entries; }

 private:
  std::vector<ChapterEntry> m_entries;
};

/// A window's drawing surface with the window's font, for measuring.
class FontContext {
 public:
  explicit FontContext(HWND window) noexcept : m_window(window), m_context(GetDC(window)) {
    const LRESULT font = SendMessageW(window, WM_GETFONT, 0, 0);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): messages answer with handles as integers
    m_former = SelectObject(m_context, reinterpret_cast<HGDIOBJ>(font));
  }
  ~FontContext() {
    if (m_former != nullptr) SelectObject(m_context, m_former);
    ReleaseDC(m_window, m_context);
  }
  FontContext(const FontContext&) = delete;
  FontContext& operator=(const FontContext&) = delete;

  LONG WidthOf(const WideString& text) const noexcept {
    SIZE size{};
    GetTextExtentPoint32W(m_context, text.c_str(), static_cast<int>(text.size()), &size);
    return size.cx;
  }

 private:
  HWND m_window;
  HDC m_context;
  HGDIOBJ m_former = nullptr;
};

// "0x8004022B"
WideString HexText(HRESULT result) {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  WideString text = L"0x";
  for (int shift = 28; shift >= 0; shift -= 4) text += kDigits[static_cast<ULONG>(result) >> shift & 15U];
  return text;
}

}  // namespace

CUnknown* CPropertyPropPage::CreateInstance(IUnknown* outer, HRESULT* /*result*/) {
  return new CPropertyPropPage(outer);
}

CPropertyPropPage::CPropertyPropPage(IUnknown* outer)
    : CBasePropertyPage("Tarvex Matroska Splitter Property Page", outer, TARVEX_DIALOG_SETTINGS,
                        TARVEX_TITLE_SETTINGS) {}

HRESULT CPropertyPropPage::OnConnect(IUnknown* object) {
  if (object == nullptr) return E_POINTER;
  return object->QueryInterface(IID_IModuleConfig, m_config.PutVoid());
}

HRESULT CPropertyPropPage::OnDisconnect() {
  m_config.Reset();
  return S_OK;
}

HRESULT CPropertyPropPage::OnActivate() {
  m_list = Control(TARVEX_SETTINGS_CHAPTERS);
  ReadSetting(paramAnnexBOutput, TARVEX_SETTINGS_ANNEX_B, m_annexB);
  m_filterAnnexB = m_annexB;
  ReadSetting(paramSeparatePins, TARVEX_SETTINGS_SEPARATE_PINS, m_separatePins);
  const ULONG count = ChapterCount();
  if (count == 0) return S_OK;
  const HRESULT result = ReadChapters(count);
  return FAILED(result) ? result : FillList();
}

void CPropertyPropPage::ReadSetting(const GUID& parameter, int box, std::int32_t& state) {
  VARIANT value{};
  if (FAILED(m_config->GetValue(&parameter, &value))) return;
  state = value.lVal;  // true is 1 here, and any other bit would do
  CheckDlgButton(Window(), box, state != 0 ? BST_CHECKED : BST_UNCHECKED);
}

// 0 where the filter does not say.
ULONG CPropertyPropPage::ChapterCount() {
  VARIANT value{};
  value.vt = VT_UINT;
  return SUCCEEDED(m_config->GetValue(&paramChapterList, &value)) ? value.ulVal : 0;
}

HRESULT CPropertyPropPage::ReadChapters(ULONG count) {
  ChapterArray array(count);
  VARIANT value{};
  value.vt = VT_PTR;
  value.byref = array.Entries().data();
  const HRESULT result = m_config->GetValue(&paramChapterList, &value);
  if (FAILED(result)) return result;
  std::vector<Chapter> chapters;
  chapters.reserve(count);
  for (const ChapterEntry& entry : array.Entries()) {
    chapters.push_back({WideString(entry.name, SysStringLen(entry.name)), entry.start, entry.end});
  }
  m_chapters = std::move(chapters);
  return S_OK;
}

HRESULT CPropertyPropPage::FillList() {
  SendMessageW(m_list, LB_RESETCONTENT, 0, 0);
  for (const Chapter& chapter : m_chapters) {
    const WideString line = ChapterLine(chapter.name, chapter.start, chapter.end);
    if (SendMessageW(m_list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.c_str())) < 0) return E_OUTOFMEMORY;
  }
  MeasureList();
  return S_OK;
}

// A list box scrolls sideways as far as it is told to.
void CPropertyPropPage::MeasureList() {
  const FontContext context(m_list);
  LONG widest = 0;
  for (const Chapter& chapter : m_chapters) {
    widest = std::max(widest, context.WidthOf(ChapterLine(chapter.name, chapter.start, chapter.end)));
  }
  const LONG extent = widest + 2 * GetSystemMetrics(SM_CXEDGE);
  SendMessageW(m_list, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(extent), 0);
}

void CPropertyPropPage::OnDensityChange() { MeasureList(); }

// A frame may take the dialog away and apply afterwards.
HRESULT CPropertyPropPage::OnDeactivate() {
  KeepBoxes();
  m_list = nullptr;
  return S_OK;
}

void CPropertyPropPage::KeepBoxes() {
  m_annexB = IsDlgButtonChecked(Window(), TARVEX_SETTINGS_ANNEX_B) == BST_CHECKED ? 1 : 0;
  m_separatePins = IsDlgButtonChecked(Window(), TARVEX_SETTINGS_SEPARATE_PINS) == BST_CHECKED ? 1 : 0;
}

HRESULT CPropertyPropPage::OnApplyChanges() {
  if (Window() != nullptr) KeepBoxes();
  const HRESULT result = WriteSettings();
  if (FAILED(result)) {
    SayWhyNot(result);
  } else {
    m_filterAnnexB = m_annexB;
  }
  return result;
}

// Both or none.
HRESULT CPropertyPropPage::WriteSettings() {
  HRESULT result = WriteSetting(paramAnnexBOutput, m_annexB);
  if (FAILED(result)) return result;
  result = WriteSetting(paramSeparatePins, m_separatePins);
  if (FAILED(result) && m_annexB != m_filterAnnexB) WriteSetting(paramAnnexBOutput, m_filterAnnexB);
  return result;
}

// A frame shows no reason for a refusal, so the page does. Without a dialog nothing can be shown.
void CPropertyPropPage::SayWhyNot(HRESULT result) const {
  if (Window() == nullptr) return;
  WideString text = L"Nothing was changed.\n\n";
  if (result == VFW_E_NOT_STOPPED) {
    text += L"Separate pins can be switched on and off only while playback is stopped. Stop it and apply again.";
  } else {
    text += L"The filter refuses these settings, with the code " + HexText(result) + L'.';
  }
  MessageBoxW(Window(), text.c_str(), L"Tarvex Matroska Splitter", MB_OK | MB_ICONWARNING);
}

HRESULT CPropertyPropPage::WriteSetting(const GUID& parameter, std::int32_t state) {
  VARIANT value{};
  value.vt = VT_BOOL;
  value.boolVal = static_cast<VARIANT_BOOL>(state);
  return m_config->SetValue(&parameter, &value);
}

INT_PTR CPropertyPropPage::OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_COMMAND) {
    const WORD control = LOWORD(wParam);
    if (control == TARVEX_SETTINGS_ANNEX_B || control == TARVEX_SETTINGS_SEPARATE_PINS) {
      SetPageDirty();
      return TRUE;
    }
    if (control == TARVEX_SETTINGS_CHAPTERS && HIWORD(wParam) == LBN_DBLCLK) JumpToChapter();
  }
  if (message == WM_VKEYTOITEM) return OnKeyInList(LOWORD(wParam));
  return CBasePropertyPage::OnReceiveMessage(window, message, wParam, lParam);
}

// The list box asks for each key; the answers are its own. Enter is the frame's.
INT_PTR CPropertyPropPage::OnKeyInList(WORD key) {
  constexpr INT_PTR kDone = -2;
  constexpr INT_PTR kAsUsual = -1;
  if (key != VK_SPACE) return kAsUsual;
  JumpToChapter();
  return kDone;
}

void CPropertyPropPage::JumpToChapter() {
  const LRESULT selected = SendMessageW(m_list, LB_GETCURSEL, 0, 0);
  if (!m_config || selected < 0 || static_cast<std::size_t>(selected) >= m_chapters.size()) return;
  VARIANT value{};
  value.vt = VT_I8;
  value.llVal = m_chapters[static_cast<std::size_t>(selected)].start;
  m_config->SetValue(&paramPosition, &value);
}

}  // namespace tarvex
