// RvNetPackage: a payload stream and the files that travel with it.
#include <zrad/files.h>
#include <zrad/remotedebug.h>

ZR_RX_DEFINE_MEMBERS(RvNetPackage, ZrRxObject, L"RvNetPackage")

ZrSmartPtr<RvNetPackage> RvNetPackage::createObject(ZrSmartPtr<ZrStreamBuf> stream) {
  ZrSmartPtr<RvNetPackage> pkg = ZrRxObjectImpl<RvNetPackage>::createObject();
  pkg->m_stream = stream;
  return pkg;
}

RvNetPackage::~RvNetPackage() {
  for (const ZrUtf8String& path : m_removeFiles) zrutRemoveFile(path);
  m_removeFiles.clear();
  m_files.clear();
}

int RvNetPackage::putFile(const ZrUtf8String& path, bool removeWhenDone) {
  if (!zrutIsExistFile(path)) return -1;
  m_files.append(path);
  if (removeWhenDone) m_removeFiles.append(path);
  return m_files.length();
}

ZrUtf8String RvNetPackage::getFilePath(int index) const {
  if (index < 1 || index > m_files.length()) return ZrUtf8String();
  return m_files[index - 1];
}
