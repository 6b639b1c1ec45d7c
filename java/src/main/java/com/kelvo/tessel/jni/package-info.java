/** The native library: how it is found, its diagnostics, file security and group checks. */
package com.kelvo.tessel.jni;
