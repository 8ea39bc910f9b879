#pragma once
// The list forms "签名库管理" and "印章库管理" on the host's command line. Each works on a copy
// of the global library: rows are deleted or switched on and off, files imported and exported,
// stamps added from pictures; OK saves the copy to the library file and reloads the global
// library from it, Cancel drops the copy.
namespace tv::signing {

void SignLibraryCommand();
void StampLibraryCommand();

}  // namespace tv::signing
