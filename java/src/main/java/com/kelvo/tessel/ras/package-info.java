/** What the native library calls to report events and trace, here handed on to {@code java.util.logging}. */
package com.kelvo.tessel.ras;
