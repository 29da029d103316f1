#pragma once

/// Registers access to local files in FileIO::getFactory() under "file". Returns 1; a second call
/// creates nothing.
int createFileIOFactory();

/// Registers the reader and writer of the stored tree in DataTreeIO::getFactory() under "xml".
/// Returns 1; a second call creates nothing.
int createXMLDataTreeIOFactory();
