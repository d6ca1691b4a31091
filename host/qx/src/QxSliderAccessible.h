#pragma once

class QxSlider;

/// Makes sliders known to screen readers, as sliders with a value and limits; for all that are made later.
void installSliderAccessibility();

/// Tells screen readers that the value has changed.
void announceSliderValue(QxSlider* slider);
