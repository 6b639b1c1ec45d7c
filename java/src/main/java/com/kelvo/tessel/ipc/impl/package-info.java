/** Client and server of the local message service, on the native library. */
package com.kelvo.tessel.ipc.impl;
