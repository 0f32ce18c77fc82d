// Viewers.

/**
 * One image viewer, from `Orvane.activeViewer` or `Orvane.viewer`. It answers for what is on show at that moment, and
 * neutrally when that is nothing, or the viewer has closed.
 *
 * `idx` counts the layers: 0, the default, is the series itself, 1 the one fused into it.
 *
 * @example
 * var viewer = Orvane.activeViewer();
 * if (viewer)
 *     print(viewer.type(), viewer.getTag("DICOM.SeriesDescription"));
 */
interface Viewer extends HostObject {
    /**
     * What it shows: "slice" planes of a volume, "2D" images that make up no volume, "volren" a volume rendering,
     * "curved" a curved plane. Neutral, and for other kinds: empty.
     */
    type(): "2D" | "slice" | "volren" | "curved" | "";
    /** The display set id; in the workstation and in kyrun the place in the layout, "1" to "4". Neutral: empty. */
    displaySetId(): string;
    /** The id of a layer's images; in the workstation and in kyrun the series instance UID. Neutral: empty. */
    imageSetId(idx?: number): string;
    /**
     * How the plane lies: 0 axial, 1 sagittal, 2 coronal, 3 oblique, more than 37 degrees from each of these, 4
     * unknown. Neutral: -1.
     */
    orientation(idx?: number): number;
    /** The number of the plane, from 0, the nearest one when it lies between two. Neutral: -1. */
    sliceNumber(idx?: number): number;
    /**
     * Columns, rows and images of the volume.
     * Neutral: undefined.
     *
     * @example
     * var viewer = Orvane.activeViewer();
     * var dims = viewer && viewer.dims();
     * if (dims)
     *     print(dims[0] + " x " + dims[1] + " x " + dims[2]);
     */
    dims(idx?: number): [columns: number, rows: number, images: number] | undefined;
    /**
     * The value of a DICOM tag of the image on show, as the viewer shows it: WindowCenter and WindowWidth are the
     * present ones. In a plane that cuts through all images, only what is the same in all of them. Neutral, also for a
     * wrong name and for tags of the worklist: undefined.
     */
    getTag(tagName: DicomTag, idx?: number): TagValue;
    /** How much of the second layer is seen, from 0 to 1. Neutral: undefined. */
    fusionWeight(): number | undefined;
}
