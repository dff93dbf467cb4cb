// The settings page: two settings of the filter, and its chapters with a jump to each. Made by the class
// factory for a frame; everything on the thread of the frame's window. Knows the filter as IModuleConfig
// alone.
#pragma once

#include <cstdint>
#include <vector>

#include "framework/base_property_page.h"
#include "framework/text_conversion.h"
#include "include/tarvex/chapter_entry.h"
#include "include/tarvex/module_config.h"

namespace tarvex {

class CPropertyPropPage final : public CBasePropertyPage {
 public:
  /// For the class factory. May throw std::bad_alloc.
  static CUnknown* CreateInstance(IUnknown* outer, HRESULT* result);

 private:
  struct Chapter {
    WideString name;
    LONGLONG start;  // 100 ns units
    LONGLONG end;
  };

  explicit CPropertyPropPage(IUnknown* outer);

  HRESULT OnConnect(IUnknown* object) override;
  HRESULT OnDisconnect() override;
  HRESULT OnActivate() override;
  HRESULT OnDeactivate() override;
  HRESULT OnApplyChanges() override;
  void OnDensityChange() override;
  INT_PTR OnReceiveMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;
  /// Moves playback to the selected chapter, at once. Nothing happens without one.
  virtual void JumpToChapter();

  INT_PTR OnKeyInList(WORD key);
  void ReadSetting(const GUID& parameter, int box, std::int32_t& state);
  HRESULT WriteSetting(const GUID& parameter, std::int32_t state);
  HRESULT WriteSettings();
  void SayWhyNot(HRESULT result) const;
  void KeepBoxes();
  ULONG ChapterCount();
  HRESULT ReadChapters(ULONG count);
  HRESULT FillList();
  void MeasureList();

  ComPtr<IModuleConfig> m_config;   // while connected
  std::int32_t m_filterAnnexB = 0;  // as read or applied last
  // As read or applied last. While the page is inactive: as the user left the boxes.
  std::int32_t m_annexB = 0;
  std::int32_t m_separatePins = 0;
  std::vector<Chapter> m_chapters;
  HWND m_list = nullptr;
};

}  // namespace tarvex
